#pragma once

#include "pavo_core/SimulatedLoginService.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// A simulated login service that keeps what it was asked.
class RecordingLoginService final : public SimulatedLoginService
{
public:
    /// One call made to the service: the function's name and its arguments by type, in order.
    struct Call
    {
        std::string function;
        std::vector<std::string> texts;
        std::vector<int> numbers;
        bool hasCompletion = false;
    };

    void hbxTokenLogin(const std::string& pin, const std::string& token, const std::string& client,
                       const std::string& extra, int mode,
                       std::function<void(int, std::string)> completion) override
    {
        record({"hbxTokenLogin", {pin, token, client, extra}, {mode}, completion != nullptr});
        SimulatedLoginService::hbxTokenLogin(pin, token, client, extra, mode,
                                             std::move(completion));
    }

    void changeCurrentPin(const std::string& application, const std::string& pin,
                          std::function<void(int)> completion) override
    {
        record({"changeCurrentPin", {application, pin}, {}, completion != nullptr});
        SimulatedLoginService::changeCurrentPin(application, pin, std::move(completion));
    }

    void switchPresence(int presence, int reason, std::function<void(int)> completion) override
    {
        record({"switchPresence", {}, {presence, reason}, completion != nullptr});
        SimulatedLoginService::switchPresence(presence, reason, std::move(completion));
    }

    /// The logins and changes asked for so far, in order.
    [[nodiscard]] std::vector<Call> calls() const
    {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }

private:
    void record(Call call)
    {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(std::move(call));
    }

    mutable std::mutex m_mutex;
    std::vector<Call> m_calls;
};
