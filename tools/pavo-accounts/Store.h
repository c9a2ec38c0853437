#pragma once

#include "ipc/MultiAccount/MAAccountInfo.h"
#include "ipc/MultiAccount/MASelectedAccount.h"

#include <QString>

/// The accounts of a running installation, as its processes share them.
///
/// Every call attaches to the segment, holds its lock meanwhile and detaches again: a segment whose
/// processes are all gone does not live on because somebody watches it.
class Store
{
public:
    /// What a look has seen. Without running processes there is nothing.
    struct Content
    {
        MASelectedAccount selected;
        std::list<MAAccountInfo> accounts;
    };

    explicit Store(QString application);

    [[nodiscard]] const QString& application() const { return m_application; }

    /// False, with the reason in `problem`, when the segment cannot be used.
    bool look(Content& content, QString& problem) const;

    /// Takes an account out whose process has crashed, and tells its neighbour to come to the front
    /// if it was there. False, with the reason in `problem`, when it is not listed or its window is
    /// still there.
    bool remove(const std::string& appID, const std::string& pin, QString& problem) const;

private:
    class Visit;

    void tell(int code, const std::string& className, const std::string& title) const;

    QString m_application;
};

enum class WindowPresence { Missing, Hidden, Visible };

WindowPresence windowPresence(const std::string& className, const std::string& title);
