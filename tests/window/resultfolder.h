// A folder of results as the road leaves it, made by hand: record and intensities of a known crystal.
#pragma once

#include <QString>

namespace tessera {

/// Writes NAME.run.json and NAME_integrated.hkl of a crystal that saw a part of the reflections to d* = 0.8
/// Å⁻¹, with errors of 3 %. Makes the folder.
/// @param strCompound  "quartz", "kyanite", ... of the simulator, which lends structure factors and cell
/// @param nSeed        of the errors, of which reflections it saw, and of its cell, off by 0.3 % at most
void writeResultFolder(const QString& strFolder, const QString& strName, const QString& strCompound,
                       int nSeed);

}  // namespace tessera
