#include "tools/pavo-host/AccountsView.h"

#include "tools/pavo-host/TimeLine.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace {

constexpr const char* kStates[] = {"no state", "normal", "minimised", "maximised", "hidden"};

QString frontText(const QJsonObject& selected)
{
    const int state = selected[QStringLiteral("windowState")].toInt();
    const bool isKnown = state >= 0 && state < static_cast<int>(std::size(kStates));
    const auto number = [&](const char* key) { return selected[QLatin1String(key)].toInt(); };
    return QStringLiteral("%1, %2 %3 %4x%5 at %6,%7")
        .arg(QLatin1String(number("mode") == 1 ? "merged" : "separate"),
             selected[QStringLiteral("pin")].toString(),
             isKnown ? QLatin1String(kStates[state]) : QString::number(state))
        .arg(number("w"))
        .arg(number("h"))
        .arg(number("x"))
        .arg(number("y"));
}

/// With what is not 0 about it.
QString accountText(const QJsonObject& account)
{
    struct Number
    {
        const char* key;
        const char* name;
    };
    constexpr Number kNumbers[] = {
        {"unread", "unread"}, {"unreadMark", "mark"}, {"skin", "skin"}, {"loginState", "login"}};
    QString text = account[QStringLiteral("pin")].toString() + QLatin1Char(' ') +
                   account[QStringLiteral("window")].toString();
    for (const Number& number : kNumbers) {
        const int value = account[QLatin1String(number.key)].toInt();
        if (value != 0)
            text += QStringLiteral(" %1 %2").arg(QLatin1String(number.name)).arg(value);
    }
    return text;
}

QString viewText(const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return QStringLiteral("no document");
    const QJsonArray list = document[QStringLiteral("accounts")].toArray();
    QStringList accounts;
    for (const auto& account : list)
        accounts << accountText(account.toObject());
    if (accounts.isEmpty())
        return QStringLiteral("nobody");
    return frontText(document[QStringLiteral("selected")].toObject()) + QStringLiteral(": ") +
           accounts.join(QStringLiteral(", "));
}

} // namespace

AccountsView::AccountsView(const QString& application, TimeLine& timeLine)
    : m_timeLine(timeLine)
{
    m_process.setProgram(QCoreApplication::applicationDirPath() + QStringLiteral("/pavo-accounts"));
    m_process.setArguments(
        {QStringLiteral("--application"), application, QStringLiteral("--json")});
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        m_problem = QStringLiteral("cannot start %1, which looks at the accounts: %2")
                        .arg(m_process.program(), m_process.errorString());
        Q_EMIT changed();
    });
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &AccountsView::finishLook);
}

AccountsView::~AccountsView()
{
    m_process.disconnect(this);
    m_process.kill();
    m_process.waitForFinished(-1);
}

void AccountsView::start()
{
    m_process.start(QIODevice::ReadOnly);
}

void AccountsView::finishLook()
{
    const bool fine = m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    const QByteArray json = m_process.readAllStandardOutput();
    const QString errors = QString::fromUtf8(m_process.readAllStandardError()).trimmed();
    const QString text =
        fine ? viewText(json) : QStringLiteral("pavo-accounts has failed: %1").arg(errors);
    if (text != m_text) {
        m_text = text;
        m_timeLine.add({Event::Accounts, text});
    }
    Q_EMIT changed();
    start();
}
