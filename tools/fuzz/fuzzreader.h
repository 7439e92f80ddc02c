// FuzzReader: a reader of files with checks that must hold for any content.
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

namespace tessera {

/// A reader that the fuzzers call with random bytes, and the tests with the cases that the fuzzers have
/// found.
struct FuzzReader {
    QString strName;  ///< name of the fuzz target, and of the folder of cases
    QString strFile;  ///< name of the file, as readers go by the suffix
    /// Reads the file whose content is `bytes`. It may write to strFileName + ".written".
    /// @return what is wrong with the reader; empty if nothing is
    std::function<QString(const QString& strFileName, const QByteArray& bytes)> fnRead;
};

/// One entry for each format that the program reads; those of frames come from frameFormats().
const std::vector<FuzzReader>& fuzzReaders();

/// Writes the bytes to a temporary file and reads it.
/// @return as FuzzReader::fnRead
QString readAsFile(const FuzzReader& reader, const QByteArray& bytes);

}  // namespace tessera
