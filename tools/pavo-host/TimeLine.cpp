#include "tools/pavo-host/TimeLine.h"

#include <QByteArray>

#include <cstdio>
#include <utility>

namespace {

// By Who.
const char* const kColumns[] = {"host", "host -->", "host <--", "workbench", "its log", "accounts"};

/// What comes from elsewhere must not move the terminal's cursor.
QString printable(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        if (character.category() == QChar::Other_Control)
            result += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        else
            result += character;
    }
    return result;
}

} // namespace

void TimeLine::add(Who who, const QString& text)
{
    print(QStringLiteral("%1  %2  %3\n")
              .arg(static_cast<double>(m_clock.elapsed()) / 1000, 8, 'f', 3)
              .arg(QLatin1String(kColumns[who]), -9)
              .arg(printable(text)));
}

void TimeLine::addHeading(const QString& text)
{
    print(QStringLiteral("\n== %1\n").arg(printable(text)));
}

void TimeLine::print(const QString& text)
{
    if (std::exchange(m_atPrompt, false))
        std::fputc('\r', stdout);
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

void TimeLine::showPrompt()
{
    print(QStringLiteral("> "));
    m_atPrompt = true;
}
