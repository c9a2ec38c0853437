#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtGlobal>

/// While it lives, gives this process and its children a folder of their own for pipes, windows and
/// segments, so that what tests make up does not pile up in the user's. Windows keeps all of these
/// itself.
class RuntimeFolder
{
public:
    RuntimeFolder()
    {
        // Other users may pass through: some tests are another user.
        QFile::setPermissions(m_folder.path(), QFile::ReadOwner | QFile::WriteOwner |
                                                   QFile::ExeOwner | QFile::ExeOther);
        for (int i = 0; i < kCount; ++i) {
            m_before[i] = qgetenv(kVariables[i]);
            qputenv(kVariables[i], m_folder.path().toLocal8Bit());
        }
    }
    ~RuntimeFolder()
    {
        for (int i = 0; i < kCount; ++i) {
            if (m_before[i].isNull())
                qunsetenv(kVariables[i]);
            else
                qputenv(kVariables[i], m_before[i]);
        }
    }
    RuntimeFolder(const RuntimeFolder&) = delete;
    RuntimeFolder& operator=(const RuntimeFolder&) = delete;

private:
    static constexpr int kCount = 2;
    static constexpr const char* kVariables[kCount] = {"XDG_RUNTIME_DIR", "TMPDIR"};

    // Not named after the application, whose name may be any.
    QTemporaryDir m_folder{QDir::tempPath() + QStringLiteral("/pavo-test-XXXXXX")};
    QByteArray m_before[kCount];
};
