#pragma once

#include <QString>

/// Looks at the lock of an installation's segment, says what it has found, and frees a lock that
/// was left taken, when the user agrees on standard input or `isAgreed` from the start. Returns
/// whether the lock is free.
bool unlock(const QString& application, bool isAgreed);
