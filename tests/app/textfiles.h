// Small helpers for tests that read and write files.
#pragma once

#include "app/dataset/dataset.h"
#include "printtexts.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QString>

inline QString putFile(const QString& strFileName, const QByteArray& bytes)
{
    QFile file(strFileName);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << strFileName.toStdString();
    EXPECT_EQ(file.write(bytes), bytes.size());
    return strFileName;
}

inline QByteArray bytesOf(const QString& strFileName)
{
    QFile file(strFileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

inline void setFrames(DataSet& data, int nFrames)
{
    data.m_listFrameFile.clear();
    for (int i = 0; i < nFrames; ++i)
        data.m_listFrameFile.append(QStringLiteral("f%1.mrc").arg(i));
}
