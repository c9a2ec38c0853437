#pragma once

#include <functional>

/// How long a condition may take before a test gives it up. Generous, since instrumented builds and
/// loaded machines are slow, and never waited for when all is well.
constexpr int kDeadlineMs = 30000;
/// The same for thousands of messages.
constexpr int kBurstMs = 10 * kDeadlineMs;

/// Runs the calling thread's event loop until `condition` holds; false when it never did.
bool waitUntil(const std::function<bool()>& condition, int deadlineMs = kDeadlineMs);
