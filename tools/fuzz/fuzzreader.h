// FuzzReader: a reader of files, held to what must be true whatever bytes it is given.
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

namespace tessera {

/// The fuzzers throw bytes at these, and the tests the cases that fuzzers have found.
struct FuzzReader {
    QString strName;  ///< of the fuzz target, and of the reader's folder of cases
    QString strFile;  ///< name of the file that it is given: readers go by the suffix
    /// Reads the file whose content is `bytes`; what it writes itself goes to strFileName + ".written".
    /// @return what is wrong with the reader; empty if nothing is
    std::function<QString(const QString& strFileName, const QByteArray& bytes)> fnRead;
};

/// One for each format that the program reads; those of frames come from frameFormats().
const std::vector<FuzzReader>& fuzzReaders();

/// Puts the bytes into a file of a folder for temporary files and has it read.
/// @return as FuzzReader::fnRead
QString readAsFile(const FuzzReader& reader, const QByteArray& bytes);

}  // namespace tessera
