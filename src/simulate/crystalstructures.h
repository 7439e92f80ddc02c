// CrystalStructure: published structures that series are simulated from.
#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <vector>

namespace tessera {

/// One site of the asymmetric unit.
struct AtomSite {
    QString strElement;
    double dfX, dfY, dfZ;  ///< fractional
};

/// A crystal as published, in the setting of the source.
struct CrystalStructure {
    QString strName;                ///< what the option --crystal takes
    QString strSpaceGroup;          ///< Hermann-Mauguin symbol
    int nSpaceGroup;                ///< its number in the International Tables
    QString strSource;              ///< where cell and coordinates were published
    std::array<double, 6> adfCell;  ///< a, b, c in Å, alpha, beta, gamma in degrees
    QStringList listGenerator;      ///< triplets that make the whole group, centring included
    std::vector<AtomSite> listSite;
};

/// All structures, from cubic to triclinic.
const std::vector<CrystalStructure>& crystalStructures();

/// The structure of that name, or null.
const CrystalStructure* findCrystalStructure(const QString& strName);

}  // namespace tessera
