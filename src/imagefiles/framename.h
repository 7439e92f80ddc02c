// FrameName: a frame as a series names it, a file or one image of a file that holds many.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// "stack.mrc#12" is the twelfth image of stack.mrc. A "#" counts only behind a suffix and before a number
/// from 1 on without leading zeros, up to the end of the name; any other name is a file's.
struct FrameName {
    QString strFile;     ///< path of the file
    int nImage = 0;      ///< from 0
    bool bPart = false;  ///< one image of many: what is read is this one alone
};

FrameName frameName(const QString& strFrame);

/// "FILE#N" for an image counted from 0.
QString nameOfImage(const QString& strFile, int nImage);

/// The frames that a file holds: itself, or "FILE#1" ... "FILE#n".
QStringList framesOfFile(const QString& strFile, int nImages);

/// What files that are made of a frame are called after: its name without folder and last suffix, of an image
/// of many with its number behind it, "stack_0012".
QString frameBaseName(const QString& strFrame);

/// The same for files that are called after a frame up to the first dot of its name; of an image of many it
/// is frameBaseName(), whose number stands behind the dots.
QString frameShortName(const QString& strFrame);

}  // namespace tessera
