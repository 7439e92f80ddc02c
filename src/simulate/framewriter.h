// writeFrame: simulated frames in the file formats of microscope cameras.
#pragma once

#include "simulate/simulationparameters.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// The formats as the option names them, in the order of SimulatedFormat.
QStringList simulatedFormatNames();

/// File name extension without the dot.
QString frameExtension(SimulatedFormat format);

/// The bytes of an MRC file with one section, rows bottom up. Values are rounded and clipped to
/// the range of the pixel type.
QByteArray encodeMrc(const std::vector<float>& listPixel, int nWidth, int nHeight, SimulatedFormat format);

/// Writes one frame whole or not at all. PNG: one grey step is 4 counts, clipped at 255.
/// @return empty, or why the file was not written
[[nodiscard]] QString writeFrame(const QString& strFileName, const std::vector<float>& listPixel, int nWidth,
                                 int nHeight, SimulatedFormat format);

}  // namespace tessera
