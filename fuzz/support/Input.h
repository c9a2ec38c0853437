#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

/// What a target reads its input with, from the front; what is missing reads as zero or empty.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size)
        : m_text(reinterpret_cast<const char*>(data), size)
    {
    }

    [[nodiscard]] bool atEnd() const { return m_position == m_text.size(); }

    int byte() { return atEnd() ? 0 : static_cast<unsigned char>(m_text[m_position++]); }

    std::string bytes(std::size_t count)
    {
        const std::string taken = m_text.substr(m_position, count);
        m_position += taken.size();
        return taken;
    }

    /// Up to the next newline, which is left out, or the end.
    std::string line()
    {
        std::string taken =
            bytes(std::min(m_text.find('\n', m_position), m_text.size()) - m_position);
        byte();
        return taken;
    }

    std::string rest() { return bytes(std::string::npos); }

private:
    const std::string m_text;
    std::size_t m_position = 0;
};
