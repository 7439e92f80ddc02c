// Text lines: reads the small text files beside the frames.
#pragma once

#include "records/reason.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace tessera {

/// The greatest length of a text file that is read line by line, bytes: some hundred thousand lines. Other
/// files that are opened by mistake do not fill the memory with their lines.
constexpr qint64 g_nMaxTextFile = 32000000;

/// Reads a whole file.
///
/// @param nLimit      a longer file is refused
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
/// @return nothing when the file cannot be read or is too long
[[nodiscard]] std::optional<QByteArray> readFileBytes(const QString& strFileName, qint64 nLimit,
                                                      QString* pstrReason = nullptr);

/// Removes a byte order mark. UTF-16 and UTF-32 text with such a mark becomes Latin-1; all other bytes stay
/// as they are.
QByteArray withoutByteOrderMark(const QByteArray& bytesText);

/// Calls fnLine(begin, end) for each line of a text that is not empty. Lines end with LF, CR LF or CR. A
/// byte order mark is removed.
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

/// The lines of a text that are not empty.
QList<QByteArray> splitTextLines(const QByteArray& bytesText);

/// Reads the lines of a file that are not empty, including comments.
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
[[nodiscard]] bool readTextLines(const QString& strFileName, QList<QByteArray>& listLine,
                                 QString* pstrReason = nullptr);

/// Reads a file by a function for its lines, fnRead(lines, reason), and puts the file's name before the
/// reason.
/// @return the result of fnRead; a default value of that type when the file cannot be read
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

/// Removes every line that begins with "#".
void dropComments(QList<QByteArray>& listLine);

}  // namespace tessera
