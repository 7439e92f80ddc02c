// Text lines: reads the small text files that stand beside the frames.
#pragma once

#include "records/reason.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace tessera {

/// The largest text file that is read line by line, bytes: some hundred thousand lines, so that a file
/// that is none of ours does not fill the memory with its lines.
constexpr qint64 g_nMaxTextFile = 32000000;

/// Reads a file whole.
///
/// @param nLimit      a longer file is refused
/// @param pstrReason  may be null; on failure names the file and what is wrong
/// @return false when the file cannot be opened or read, or is too large; `bytesFile` is then as it was
[[nodiscard]] bool readFileBytes(const QString& strFileName, QByteArray& bytesFile, qint64 nLimit,
                                 QString* pstrReason = nullptr);

/// The text without a byte order mark. UTF-16 and UTF-32 text that begins with one becomes Latin-1, all
/// other bytes stay as they are.
QByteArray withoutByteOrderMark(const QByteArray& bytesText);

/// Calls fnLine(begin, end) for each line of a text that is not empty. LF, CR LF and CR end a line; a byte
/// order mark is dropped as by withoutByteOrderMark().
template <class FnLine>
void forEachTextLine(const QByteArray& bytesText, FnLine fnLine)
{
    const QByteArray bytesPlain = withoutByteOrderMark(bytesText);
    const char* const pEnd = bytesPlain.constData() + bytesPlain.size();
    const char* pLine = bytesPlain.constData();
    for (const char* p = pLine;; ++p) {
        if (p != pEnd && *p != '\n' && *p != '\r') {
            continue;
        }
        if (p != pLine) {
            fnLine(pLine, p);
        }
        if (p == pEnd) {
            return;
        }
        pLine = p + 1;
    }
}

/// Those lines as a list.
QList<QByteArray> splitTextLines(const QByteArray& bytesText);

/// The lines of a file that are not empty, comments included.
[[nodiscard]] bool readTextLines(const QString& strFileName, QList<QByteArray>& listLine,
                                 QString* pstrReason = nullptr);

/// Reads a file by a function for its lines, fnRead(lines, reason), and puts the file's name before the
/// reason.
/// @return what fnRead gives; a default value of that type when the file cannot be read
template <class Read>
auto readLinesOfFile(const QString& strFileName, QString* pstrReason, Read fnRead)
{
    QString strReason;
    QList<QByteArray> listLine;
    if (!readTextLines(strFileName, listLine, pstrReason)) {
        return decltype(fnRead(listLine, &strReason)){};
    }
    auto result = fnRead(listLine, &strReason);
    if (!strReason.isEmpty()) {
        giveReason(pstrReason, strFileName, strReason);
    }
    return result;
}

/// Drops every line that begins with "#".
void dropComments(QList<QByteArray>& listLine);

}  // namespace tessera
