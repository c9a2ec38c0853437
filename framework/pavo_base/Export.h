#pragma once

#include <QtCore/qglobal.h>

/// Marks what pavo_base offers to other modules.
#ifdef pavo_base_EXPORTS
#define PAVO_BASE_EXPORT Q_DECL_EXPORT
#else
#define PAVO_BASE_EXPORT Q_DECL_IMPORT
#endif
