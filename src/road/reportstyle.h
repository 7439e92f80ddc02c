// The style of a report: light and dark by the reader's system, on paper as well.
#pragma once

namespace tessera {

/// CSS without the characters & < > and quotes, as CHtmlPage wants it.
extern const char* const g_pszReportStyle;

}  // namespace tessera
