#pragma once

#include "ipc/MultiAccount/MAManager.h"
#include "platform/MessageWindow.h"

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QRect>
#include <QStringList>

#include <list>
#include <memory>
#include <optional>

/// This workbench's part in the accounts of the installation: its account, the others as it last
/// heard of them, and its main window as far as they are concerned with it. Whether anything is on
/// a screen, and what it looks like, is somebody else's business, who follows the signals.
class Accounts : public QObject, private QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    struct MainWindow
    {
        int state = kMANormal;         ///< as it is when it is visible: never hidden
        QRect rect{100, 80, 860, 560}; ///< as it is, or was last, when it is normal
        bool visible = false;
    };

    Accounts();
    /// Leaves the list.
    ~Accounts() override;
    Accounts(const Accounts&) = delete;
    Accounts& operator=(const Accounts&) = delete;

    /// There is a main window from now on. It is shown if it is this account's turn.
    void enterMainWindow();
    /// Enters the account in the shared list, once.
    void join(const std::string& pin);
    [[nodiscard]] bool hasJoined() const { return m_manager->isInit(); }
    /// Takes the account out of the shared list.
    void quit();

    [[nodiscard]] QString pin() const;
    [[nodiscard]] const MainWindow& mainWindow() const { return m_mainWindow; }
    [[nodiscard]] const std::list<MAAccountInfo>& list() const { return m_list; }
    [[nodiscard]] MASelectedAccount selected() const;
    [[nodiscard]] int skin() const { return m_skin; }
    [[nodiscard]] int loginState() const { return m_loginState; }

    /// \name What the user wants
    /// @{
    void switchTo(const QString& pin);
    void bringToFront();
    void popUp(bool show);
    void hide();
    void minimise();
    void maximise();
    void place(int x, int y, int width, int height);
    void toggle();
    void setMerged(bool merged);
    void sort(const QStringList& pins);
    /// @}

    /// \name What the workbench knows of its own
    /// @{
    /// The user has changed the visible window. The rectangle is null as long as it is not known.
    void mainWindowChanged(int state, const QRect& rect);
    /// The host has said whether the windows are merged.
    void takeHostSettings();
    void changeSkin(int skin);
    void changeUnread(int count);
    void changeUnreadMark(int mark);
    void changeLoginState(int state);
    void switchOthersLoginState(int state);
    /// @}

    void sayFront() const;
    void sayList() const;
    void sayVisible() const;

Q_SIGNALS:
    /// The list, the account in front, or the own account's values.
    void changed();
    /// mainWindow() has to be brought on screen as it is now, or taken from it.
    void mainWindowWanted();
    /// Another account's user wants this account to have this presence.
    void loginStateWanted(int state);

private:
    bool nativeEventFilter(const QByteArray& type, void* message, long* result) override;
    void take(int code, const MASelectedAccount& selected, const std::list<MAAccountInfo>& list);
    void takeFront(const MASelectedAccount& selected);
    void stepBack();
    void bringBack();
    void hideOwn();
    void toggleOwn();
    void setVisible(bool visible);
    void report();

    const std::shared_ptr<MAManager> m_manager;
    std::optional<pavo::MessageWindow> m_messageWindow;
    MainWindow m_mainWindow;
    QString m_said = QStringLiteral("window hidden"); ///< of the main window
    std::list<MAAccountInfo> m_list;
    int m_skin = 0;
    int m_loginState = 0;
    bool m_entered = false;
    bool m_isApart = false; ///< behind a window of its own, as it last heard
};
