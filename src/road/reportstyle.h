// The style sheet of a report, light or dark as the reader's system is set, and suited for printing.
#pragma once

namespace tessera {

/// CSS without the characters & < > and quotes, as CHtmlPage requires.
extern const char* const g_pszReportStyle;

}  // namespace tessera
