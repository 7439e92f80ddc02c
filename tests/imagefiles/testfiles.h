// Small helpers of the image file tests: bytes to disk and back, a folder that goes away.
#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

inline QByteArray bytesOf(const QString& strFileName)
{
    QFile file(strFileName);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(strFileName);
    return file.readAll();
}

inline void writeBytes(const QString& strFileName, const QByteArray& bytes)
{
    QFile file(strFileName);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size())
        << qPrintable(strFileName);
}

class FileTest : public ::testing::Test {
protected:
    QString path(const char* pName) const { return m_dir.filePath(QString::fromUtf8(pName)); }
    static QString fixture(const QString& strName) { return QLatin1String(TESSERA_TEST_DATA "/") + strName; }
    QTemporaryDir m_dir;
};
