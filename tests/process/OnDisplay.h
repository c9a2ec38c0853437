#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>

/// Environment variables of one run of a test executable's tests.
using DisplayVariant = QList<QPair<QByteArray, QByteArray>>;

/// Each test executable with OnDisplay.cpp says here how its tests are run: once for each variant,
/// in a process with the workbench's own application, on a display of the test's own.
QList<DisplayVariant> displayVariants();
