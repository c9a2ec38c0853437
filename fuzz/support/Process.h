#pragma once

/// Makes this process one that the library can run in: an application, and a folder of its own for
/// its pipes, windows and segments. Once, before the first input.
void prepareProcess();

/// Has the logger make its records, for nobody, or spares it the work.
void setLogging(bool enabled);
