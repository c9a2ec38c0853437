#pragma once

#include "ipc/MultiAccount/MAManager.h"
#include "ipc/MultiAccount/MAMutex.h"
#include "ipc/MultiAccount/MAStoreLayout.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/RuntimeFolder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSharedMemory>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

/// A manager as a process of its own would have it, with the tests' view of what it keeps to
/// itself.
class MAManagerProbe : public MAManager
{
public:
    ~MAManagerProbe()
    {
        uninit();
        removeObserver();
    }

    bool join(const std::string& pin)
    {
        return initManager("app", pin, "class " + pin, "title " + pin, 1);
    }
    void uninit() { uninitManager(); }
    bool readSelected(MASelectedAccount& out) { return readSelectedAccount(out); }
    bool readAll(std::list<MAAccountInfo>& out) { return readAllAccount(out); }
    bool writeSelected(const MASelectedAccount& in) { return writeSelectedAccount(in); }
    bool writeAll(const std::list<MAAccountInfo>& in) { return writeAllAccount(in); }
    template<typename... Arguments>
    void modify(Arguments&&... arguments)
    {
        modifyShareMemory(std::forward<Arguments>(arguments)...);
    }
    bool registerMessage(const QString& name) { return registerWindowMessage(name); }
    template<typename... Arguments>
    void post(Arguments&&... arguments)
    {
        postProcessMessage(std::forward<Arguments>(arguments)...);
    }
    template<typename... Arguments>
    void postLocal(Arguments&&... arguments)
    {
        postLocalMessage(std::forward<Arguments>(arguments)...);
    }
    bool updateSize(int state, const QRect& rect) { return updateWindowSize(state, rect); }

    QSharedMemory& memory() { return m_sharedMemory; }
    [[nodiscard]] const char* scratchBuffer() const { return m_scratchBuffer.get(); }
    MAAccountInfo& own() { return m_ownAccount; }
    [[nodiscard]] MAObserver* observer() const { return m_observer.get(); }
    void setMessageId(unsigned int id) { m_messageId = id; }
    [[nodiscard]] unsigned int messageId() const { return m_messageId; }
    [[nodiscard]] int windowState() const { return m_windowState; }
    [[nodiscard]] QRect windowRect() const { return m_windowRect; }
    [[nodiscard]] int mergeMode() const { return m_mergeMode; }
    void setInitialized(bool initialized) { m_initialized = initialized; }

    /// What the list holds, under the lock.
    std::list<MAAccountInfo> accounts()
    {
        std::list<MAAccountInfo> list;
        const MAMutex lock(&m_sharedMemory);
        readAllAccount(list);
        return list;
    }
    MASelectedAccount selected()
    {
        MASelectedAccount record;
        const MAMutex lock(&m_sharedMemory);
        readSelectedAccount(record);
        return record;
    }
};

/// An installation of this test's own, and a view of its segment's bytes.
class AccountsFixture : public testing::Test
{
protected:
    AccountsFixture()
    {
        static int number = 0;
        QCoreApplication::setApplicationName(QStringLiteral("pavo-test-%1-%2")
                                                 .arg(QCoreApplication::applicationPid())
                                                 .arg(++number));
        m_view.setKey(QCoreApplication::applicationName() + QStringLiteral("_MEM"));
    }

    ~AccountsFixture() override { leave(); }

    /// Detaches the view, as the last one perhaps.
    void leave()
    {
        // The last one out through the gate takes the lock along, too.
        if (m_view.isAttached())
            pavo::SegmentGate(m_view).detach();
    }

    QSharedMemory* view()
    {
        segment();
        return &m_view;
    }

    /// The segment as a process sees it that knows no more than its name.
    char* segment()
    {
        if (!m_view.isAttached()) {
            const pavo::SegmentGate gate(m_view);
            EXPECT_TRUE(m_view.attach()) << m_view.errorString().toStdString();
        }
        return static_cast<char*>(m_view.data());
    }
    bool createSegment(int size) { return m_view.create(size); }
    int segmentSize() { return segment() ? m_view.size() : 0; }
    void fill(char byte) { std::memset(segment(), byte, static_cast<std::size_t>(segmentSize())); }
    std::string bytes(int offset, int size)
    {
        return {segment() + offset, static_cast<std::size_t>(size)};
    }
    std::string allBytes() { return bytes(0, segmentSize()); }
    /// Puts `text` at the start of a region and zeroes up to its end.
    void putText(int offset, int size, const std::string& text)
    {
        std::memset(segment() + offset, 0, static_cast<std::size_t>(size));
        std::memcpy(segment() + offset, text.data(), text.size());
    }
    static std::string padded(std::string text, int size)
    {
        text.resize(static_cast<std::size_t>(size), '\0');
        return text;
    }

    /// What the list holds, as "pin:idx" in order.
    static std::string order(const std::list<MAAccountInfo>& accounts)
    {
        std::string text;
        for (const MAAccountInfo& account : accounts)
            text += (text.empty() ? "" : " ") + account.pin + ':' + std::to_string(account.idx);
        return text;
    }

    /// What was logged since the log was cleared, but for slow locks.
    std::vector<std::string> logged(log4cplus::LogLevel lowest = log4cplus::ALL_LOG_LEVEL) const
    {
        return log.linesButSlowLocks(lowest);
    }
    std::vector<std::string> complaints() const { return logged(log4cplus::WARN_LOG_LEVEL); }

private:
    const RuntimeFolder m_folder;

protected:
    LogRecorder log;

private:
    QSharedMemory m_view;
};
