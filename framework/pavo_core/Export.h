#pragma once

#include <QtCore/qglobal.h>

/// Marks what pavo_core offers to other modules.
#ifdef pavo_core_EXPORTS
#define PAVO_CORE_EXPORT Q_DECL_EXPORT
#else
#define PAVO_CORE_EXPORT Q_DECL_IMPORT
#endif
