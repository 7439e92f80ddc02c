#include "records/shortmemory.h"

#include <algorithm>

namespace tessera {

CShortMemory::CShortMemory(const QString& strWhat, std::uint64_t nBytes)
    : m_bytesText(QStringLiteral("%1 takes about %2 MB, which cannot be had. Frames made smaller by \"Export "
                                 "Scaled Frames...\", in the driver by --export scaled, take less.")
                      .arg(strWhat, QString::number(std::max<std::uint64_t>(1, nBytes >> 20)))
                      .toUtf8())
{}

}  // namespace tessera
