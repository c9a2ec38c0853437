#pragma once

#include <QtCore/qglobal.h>

/// Marks what pavo_ui_base offers to other modules.
#ifdef pavo_ui_base_EXPORTS
#define PAVO_UI_BASE_EXPORT Q_DECL_EXPORT
#else
#define PAVO_UI_BASE_EXPORT Q_DECL_IMPORT
#endif
