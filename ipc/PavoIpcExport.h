#pragma once

#include <QtGlobal>

/// \file
/// What every header of the library begins with.

/// Marks what the library exports. PAVO_IPC_BUILD is set while the library itself is compiled.
#ifdef PAVO_IPC_BUILD
#define PAVO_IPC_EXPORT Q_DECL_EXPORT
#else
#define PAVO_IPC_EXPORT Q_DECL_IMPORT
#endif
