// Bytes to files and back.
#pragma once

#include "tests/printtexts.h"

#include <gtest/gtest.h>

#include <QFile>

namespace tessera {

/// What a file holds; null when it cannot be read.
inline QByteArray readBytes(const QString& strFileName)
{
    QFile file(strFileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Writes a file anew and gives its name back.
inline QString writeBytes(const QString& strFileName, const QByteArray& bytes)
{
    QFile file(strFileName);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size())
        << strFileName.toStdString();
    return strFileName;
}

}  // namespace tessera
