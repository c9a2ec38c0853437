#include "tools/pavo-workbench/ChineseTexts.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

// Mnemonics stand in brackets, as usual in Chinese.
constexpr struct
{
    std::string_view english;
    const char* chinese;
} kTexts[] = {{"%1 - Workbench", "%1 - 工作台"},
              {"%1 skin, a window of its own", "%1皮肤，独立窗口"},
              {"%1 skin, one window for all accounts", "%1皮肤，所有账号共用一个窗口"},
              {"%1 (%2, not in force)", "%1（%2，未生效）"},
              {"%1, kind %2, %3", "%1，类型 %2，%3"},
              {"%1 unread", "%1 条未读"},
              {"%1, in front", "%1，当前账号"},
              {"&Accounts", "账号(&A)"},
              {"Accounts", "账号"},
              {"Activi&ty", "动态(&T)"},
              {"Activity", "动态"},
              {"at (%1, %2), %3 x %4", "位于 (%1, %2)，%3 x %4"},
              {"Away", "离开"},
              {"Blue", "蓝色"},
              {"Busy", "忙碌"},
              {"&For all", "应用到全部(&F)"},
              {"Ctrl+1 to Ctrl+9: switch", "Ctrl+1 至 Ctrl+9 切换账号"},
              {"Geek blue", "极客蓝"},
              {"Green", "绿色"},
              {"Have the other accounts take on this presence, too", "让其他账号也使用此状态"},
              {"&Hide", "隐藏(&H)"},
              {"Hide the unread messages", "隐藏未读消息"},
              {"Hot keys", "热键"},
              {"new messages", "有新消息"},
              {"&Merge windows", "合并窗口(&M)"},
              {"Mi&nimise", "最小化(&N)"},
              {"Nobody is logged in", "未登录"},
              {"none", "无"},
              {"Offline", "离线"},
              {"Online", "在线"},
              {"Open conversation", "打开会话"},
              {"Open group", "打开群组"},
              {"Open the base-information settings", "打开基本信息设置"},
              {"Orange", "橙色"},
              {"&Presence", "状态(&P)"},
              {"Presence %1", "状态 %1"},
              {"Purple", "紫色"},
              {"Red", "红色"},
              {"&Separate windows", "拆分窗口(&S)"},
              {"Shortcuts", "快捷键"},
              {"Show the page", "显示页面"},
              {"Show the unread messages", "显示未读消息"},
              {"Skin", "皮肤"},
              {"The host has not asked for anything yet.", "主程序尚未发出任何请求。"},
              {"Workbench", "工作台"}};

} // namespace

QString ChineseTexts::translate(const char* /*context*/, const char* source,
                                const char* /*disambiguation*/, int /*number*/) const
{
    const auto* const text =
        std::find_if(std::begin(kTexts), std::end(kTexts),
                     [source](const auto& each) { return each.english == source; });
    // A null text leaves the English one as it is.
    return text == std::end(kTexts) ? QString() : QString::fromUtf8(text->chinese);
}
