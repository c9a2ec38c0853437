#pragma once

/// Ends the process as a finding, with `what` on standard error, unless `holds`.
void require(bool holds, const char* what);
