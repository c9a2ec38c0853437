#pragma once

/// Waits for input and reads up to `size` bytes of it, bypassing the C library's stream. Returns
/// how many; 0 at the end of input, and when it cannot be read.
int readStandardInput(char* buffer, int size);
