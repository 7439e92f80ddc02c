// FrameName: the name of a frame in a series, which is a file or one image of a file.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// A frame by its file. "stack.mrc#12" is the twelfth image of stack.mrc. A "#" has this meaning only after
/// a suffix and before a number from 1 on without leading zeros that ends the name; any other name is that
/// of a file.
struct FrameName {
    QString strFile;     ///< path of the file
    int nImage = 0;      ///< from 0
    bool bPart = false;  ///< one image of many: only this one is read
};

/// Splits the name of a frame.
FrameName frameName(const QString& strFrame);

/// The name "FILE#N" of an image counted from 0.
QString nameOfImage(const QString& strFile, int nImage);

/// The names of the frames of a file: the file itself, or "FILE#1" ... "FILE#n".
QStringList framesOfFile(const QString& strFile, int nImages);

/// The name for files made of a frame: its name without folder and last suffix. For an image of many its
/// number follows: "stack_0012".
QString frameBaseName(const QString& strFrame);

/// The name for files that are named after a frame up to the first dot. For an image of many it is
/// frameBaseName(), whose number would be after the dots.
QString frameShortName(const QString& strFrame);

}  // namespace tessera
