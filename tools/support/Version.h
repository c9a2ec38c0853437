#pragma once

#include <QString>

/// What a tool prints when asked for its version, which is the library's.
QString versionText();
