#include "tools/pavo-host/InboundMessages.h"

namespace {

struct InboundMessage
{
    const char* name;
    const char* example; ///< Its arguments.
};

constexpr InboundMessage kMessages[] = {
    {"ChangeSetting", R"(["{\"skinName\":\"lakeblue\",\"hotKey\":[{\"valid\":true,\"modifiers\":2,)"
                      R"(\"keyCode\":81,\"functionName\":\"quickReply\"}],\"shortcut\":[]}"])"},
    {"Login", R"(["waiter",false,1,"desktop","","secret"])"},
    {"ChangeStatus", R"([2])"},
    {"OpenLXWindow", R"(["customer-7",3,"order-42"])"},
    {"OpenLXGroup", R"(["group-5","hello"])"},
    {"OpenBaseInfoSettingWindow", R"([])"},
    {"ChangeSkin", R"(["{\"skinName\":\"emerald\"}"])"},
    {"ShowUnreadMessageList", R"([true,10,20,30,60])"},
    {"Request", R"([{"api":"showLXAccusation","url":"https://example.com/accusation/9"}])"},
};

} // namespace

std::optional<QString> InboundMessages::exampleArguments(const QString& name)
{
    for (const InboundMessage& message : kMessages) {
        if (name == QLatin1String(message.name))
            return QLatin1String(message.example);
    }
    return std::nullopt;
}

QString InboundMessages::examples()
{
    QString text;
    for (const InboundMessage& message : kMessages)
        text += QStringLiteral("%1 %2\n").arg(QLatin1String(message.name),
                                              QLatin1String(message.example));
    return text;
}

QStringList InboundMessages::names(const QString& prefix)
{
    QStringList found;
    for (const InboundMessage& message : kMessages) {
        const QString name = QLatin1String(message.name);
        if (name.startsWith(prefix, Qt::CaseInsensitive))
            found << name;
    }
    return found;
}
