// A folder that goes away, and the fixtures.
#pragma once

#include "tests/filebytes.h"

#include <QTemporaryDir>

namespace tessera {

class FileTest : public ::testing::Test {
protected:
    QString path(const char* pName) const { return m_dir.filePath(QString::fromUtf8(pName)); }
    static QString fixture(const QString& strName) { return QLatin1String(TESSERA_TEST_DATA "/") + strName; }
    QTemporaryDir m_dir;
};

}  // namespace tessera
