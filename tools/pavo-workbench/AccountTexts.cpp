#include "tools/pavo-workbench/AccountTexts.h"

#include <QStringList>

QString AccountTexts::front(const MASelectedAccount& selected)
{
    return QStringLiteral("front %1, %2, state %3, %4x%5 at %6,%7")
        .arg(selected.pin.empty() ? QStringLiteral("nobody") : QString::fromStdString(selected.pin),
             QLatin1String(selected.mergeWindow() ? "merged" : "separate"))
        .arg(selected.windowState)
        .arg(selected.w)
        .arg(selected.h)
        .arg(selected.x)
        .arg(selected.y);
}

QString AccountTexts::list(const std::list<MAAccountInfo>& accounts)
{
    struct Number
    {
        const char* name;
        int MAAccountInfo::*value;
    };
    constexpr Number kNumbers[] = {{"unread", &MAAccountInfo::unread},
                                   {"mark", &MAAccountInfo::unreadMark},
                                   {"skin", &MAAccountInfo::skin},
                                   {"login", &MAAccountInfo::loginState}};
    QStringList texts;
    for (const MAAccountInfo& account : accounts) {
        QString text = QString::fromStdString(account.pin);
        for (const Number& number : kNumbers) {
            if (account.*number.value != 0)
                text += QStringLiteral(" %1 %2")
                            .arg(QLatin1String(number.name))
                            .arg(account.*number.value);
        }
        texts << text;
    }
    return texts.isEmpty() ? QStringLiteral("no list")
                           : QStringLiteral("list ") + texts.join(QStringLiteral(", "));
}
