// Texts of failed comparisons.
#pragma once

#include <QByteArray>
#include <QString>

#include <ostream>

inline void PrintTo(const QString& str, std::ostream* pStream)
{
    *pStream << '"' << str.toStdString() << '"';
}
inline void PrintTo(const QByteArray& ba, std::ostream* pStream)
{
    *pStream << '"' << ba.toStdString() << '"';
}
