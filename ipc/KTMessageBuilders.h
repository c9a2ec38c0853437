#pragma once

#include "ipc/KTProcessMessage.h"

#include <QString>

#include <string>

/// Makes messages of one name, whose arguments are values of the given types in this order.
template<typename... Values>
struct KTMessageBuilder
{
    const char* name;

    std::string operator()(KTProcessMessage& message, const Values&... values) const
    {
        return message.build(name, values...);
    }
};

/// Every message that the workbench sends: its name on the wire and its arguments' types. Nothing
/// else states either.
namespace KTMessageBuilders {

using Text = std::string;

inline constexpr KTMessageBuilder<> activePlatform{"ActivePlatform"};
inline constexpr KTMessageBuilder<Text> baseInfoChanged{"BaseInfoChanged"};
inline constexpr KTMessageBuilder<int> changeLoginInitStatus{"ChangeLoginInitStatus"};
inline constexpr KTMessageBuilder<QString> changeSkin{"ChangeSkin"};
inline constexpr KTMessageBuilder<int> changeStatusCallback{"ChangeStatusCallback"};
inline constexpr KTMessageBuilder<Text, bool> openPlugin{"OpenPlugin"};
inline constexpr KTMessageBuilder<Text> openSetting{"OpenSetting"};
inline constexpr KTMessageBuilder<Text, bool> openUrl{"OpenUrl"};
inline constexpr KTMessageBuilder<Text, int> showMessageBox{"ShowMessageBox"};
inline constexpr KTMessageBuilder<unsigned int, QString> startupCompleted{"StartupCompleted"};
inline constexpr KTMessageBuilder<bool, Text, int> trayIconAction{"TrayIconAction"};
inline constexpr KTMessageBuilder<int> unreadMessageChanged{"UnreadMessageChanged"};
inline constexpr KTMessageBuilder<int, QString, QString, QString, QString, QString>
    uploadCefException{"UploadCefException"};
inline constexpr KTMessageBuilder<int, QString, QString, QString> uploadInterfaceException{
    "UploadInterfaceException"};

} // namespace KTMessageBuilders
