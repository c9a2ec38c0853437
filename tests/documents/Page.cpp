#include "tests/documents/Page.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int kBytesPerLine = 16;

bool isFence(const QString& line)
{
    return line.startsWith(QStringLiteral("```"));
}

} // namespace

std::vector<QString> Section::blocks(const QString& language) const
{
    std::vector<QString> found;
    QString text;
    QString open;
    for (const QString& line : lines) {
        if (!isFence(line)) {
            text += line + QLatin1Char('\n');
        } else if (open.isEmpty()) {
            open = line;
            text.clear();
        } else {
            if (open.mid(3) == language)
                found.push_back(text.trimmed());
            open.clear();
        }
    }
    return found;
}

std::vector<QStringList> Section::rows() const
{
    std::vector<QStringList> found;
    bool isBelowRule = false;
    for (const QString& line : lines) {
        if (!line.startsWith(QLatin1Char('|'))) {
            isBelowRule = false;
        } else if (line.startsWith(QStringLiteral("|--"))) {
            isBelowRule = true;
        } else if (isBelowRule) {
            QStringList cells = line.split(QLatin1Char('|')).mid(1);
            cells.removeLast();
            for (QString& cell : cells)
                cell = cell.trimmed();
            found.push_back(cells);
        }
    }
    return found;
}

Page::Page(const QString& fileName)
{
    bool isFenced = false;
    for (const QString& line :
         readSource(QStringLiteral("docs/") + fileName).split(QLatin1Char('\n'))) {
        isFenced ^= isFence(line);
        const auto level = static_cast<int>(
            std::find_if(line.begin(), line.end(), [](QChar c) { return c != QLatin1Char('#'); }) -
            line.begin());
        if (!isFenced && level > 0)
            m_sections.emplace_back(level, line.mid(level).trimmed());
        else if (!m_sections.empty())
            m_sections.back().lines << line;
    }
}

Section Page::section(const QString& title) const
{
    const auto found = std::find_if(m_sections.begin(), m_sections.end(),
                                    [&](const Section& s) { return s.title == title; });
    return found == m_sections.end() ? Section(0, title) : *found;
}

std::vector<Section> Page::sectionsUnder(const QString& title) const
{
    auto at = std::find_if(m_sections.begin(), m_sections.end(),
                           [&](const Section& s) { return s.title == title; });
    std::vector<Section> found;
    if (at == m_sections.end())
        return found;
    const int level = at->level;
    for (++at; at != m_sections.end() && at->level > level; ++at)
        if (at->level == level + 1)
            found.push_back(*at);
    return found;
}

QString sourceFile(const QString& path)
{
    return QStringLiteral(PAVO_SOURCE_DIR "/") + path;
}

QString readSource(const QString& path)
{
    QFile file(sourceFile(path));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QStringList codeSpans(const QString& text)
{
    QStringList spans;
    const QStringList parts = text.split(QLatin1Char('`'));
    for (int i = 1; i < parts.size(); i += 2)
        spans << parts[i];
    return spans;
}

QString hexDump(const QByteArray& bytes, int firstOffset)
{
    QStringList lines;
    for (int at = 0; at < bytes.size(); at += kBytesPerLine) {
        QString numbers;
        QString characters;
        for (const char byte : bytes.mid(at, kBytesPerLine)) {
            const auto number = static_cast<unsigned char>(byte);
            numbers += QStringLiteral(" %1").arg(number, 2, 16, QLatin1Char('0'));
            characters += QLatin1Char(number >= ' ' && number < 0x7f ? byte : '.');
        }
        lines << QStringLiteral("%1 %2  %3")
                     .arg(firstOffset + at, 6, 16, QLatin1Char('0'))
                     .arg(numbers, -3 * kBytesPerLine)
                     .arg(characters);
    }
    return lines.join(QLatin1Char('\n'));
}

QByteArray bytesOfDump(const QString& dump)
{
    static const QRegularExpression offset(QStringLiteral("^[0-9a-f]{6} "));
    QByteArray bytes;
    for (const QString& line : dump.split(QLatin1Char('\n')))
        if (offset.match(line).hasMatch())
            bytes += QByteArray::fromHex(line.mid(7, 3 * kBytesPerLine).toLatin1());
    return bytes;
}
