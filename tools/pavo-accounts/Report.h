#pragma once

#include "tools/pavo-accounts/Store.h"

/// What a look has seen, for people: a few lines.
std::string reportAsText(const QString& application, const Store::Content& content);

/// The same for programs: one JSON object on one line.
std::string reportAsJson(const QString& application, const Store::Content& content);
