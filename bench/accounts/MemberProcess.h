#pragma once

#include "bench/Process.h"
#include "bench/accounts/Member.h"

/// The kinds of members: the library's, its floor's and their peers'.
const std::vector<MemberKind>& memberKinds();

/// Starts a member in a process of its own, in no group yet. It obeys "join" and "quit", which it
/// answers with the microseconds it took, "seed N", "switch PIN" and "mode N", which it answers
/// with the moment before as soon as it was told something itself, "await", which it answers at
/// once and again with the moment it was told something.
Child startMember(const MemberKind& kind, const QString& installation, const std::string& pin,
                  const QString& address = {});
