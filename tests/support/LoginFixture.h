#pragma once

#include "tests/support/ChannelFixture.h"
#include "tests/support/RecordingLoginService.h"

#include "pavo_core/PAVOCore.h"

/// A channel whose core has a login service that answers on its own thread.
class LoginFixture : public ChannelFixture
{
protected:
    LoginFixture() { PAVOCore::setShareInstance(&core); }
    ~LoginFixture() override { PAVOCore::setShareInstance(nullptr); }

    /// The calls of one function that the service has had so far.
    std::vector<RecordingLoginService::Call> serviceCalls(const std::string& function) const
    {
        std::vector<RecordingLoginService::Call> found;
        for (const auto& call : service->calls()) {
            if (call.function == function)
                found.push_back(call);
        }
        return found;
    }

    /// Waits for the next outbound message and returns its text.
    QByteArray nextMessage()
    {
        if (!waitUntil([&] { return fromWorkbench.messages().count() > m_seen; }))
            return "no message";
        return fromWorkbench.messages().values().at(m_seen++).mid(4);
    }

    std::shared_ptr<RecordingLoginService> service = std::make_shared<RecordingLoginService>();
    PAVOCore core{service};

private:
    std::size_t m_seen = 0;
};
