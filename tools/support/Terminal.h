#pragma once

#include <memory>

/// Standard output, made ready for people if it is a terminal, for as long as this lives.
class Terminal
{
public:
    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Whether it understands colour sequences.
    bool showsColours() const;

private:
    struct State;
    const std::unique_ptr<State> m_state;
};
