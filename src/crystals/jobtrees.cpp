#include "crystals/jobtrees.h"

#include <QHash>

namespace tessera {

namespace {

QString lastParts(const Crystal& crystal, int nFolders)
{
    const QStringList listPart = crystal.strFolder.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return (listPart.mid(qMax(0, listPart.size() - nFolders)) + QStringList{crystal.strName})
        .join(QLatin1Char('/'));
}

}  // namespace

QStringList labelsOf(const std::vector<Crystal>& listCrystal)
{
    const int nMostFolders = 4;  // further ones make labels that no drawing has room for
    QStringList listLabel;
    for (const Crystal& crystal : listCrystal) {
        listLabel.append(crystal.strName);
    }
    for (int nFolders = 1; nFolders <= nMostFolders; ++nFolders) {
        QHash<QString, int> mapCount;
        for (const QString& strLabel : listLabel) {
            ++mapCount[strLabel];
        }
        for (int n = 0; n < listLabel.size(); ++n) {
            if (mapCount[listLabel[n]] > 1) {
                listLabel[n] = lastParts(listCrystal[n], nFolders);
            }
        }
    }
    return listLabel;
}

TreePlot latticeTree(const CrystalsJobResult& result, const CellTolerance& tolerance)
{
    TreePlot plot;
    plot.strTitle = QStringLiteral("Lattices of %1").arg(result.strName);
    plot.strHeight = QStringLiteral("distance of the lattices; 1: %1 % of an edge or %2° of an angle")
                         .arg(tolerance.dfLengths)
                         .arg(tolerance.dfAngles);
    plot.bRootScale = true;
    plot.dfCut = 1;
    plot.listJoint = result.groups.listJoint;
    const QStringList listLabel = labelsOf(result.listCrystal);
    for (const int n : result.groups.listInTree) {
        const CrystalFate& fate = result.listFate[n];
        plot.listLeaf.push_back({listLabel[n], fate.nGroup, !fate.bUsed});
    }
    for (const CompoundGroup& compound : result.listGroup) {
        plot.listColour.append(compound.strName);
    }
    return plot;
}

TreePlot correlationTree(const CrystalsJobResult& result, const CompoundGroup& compound)
{
    TreePlot plot;
    plot.strTitle = QStringLiteral("Crystals of %1").arg(compound.strName);
    plot.strHeight = QStringLiteral("√(1 − r²), r the correlation of the normalized amplitudes");
    plot.listJoint = compound.merged.listJoint;
    const QStringList listLabel = labelsOf(result.listCrystal);
    for (size_t n = 0; n < compound.merged.listSettled.size(); ++n) {
        const bool bUsed = compound.merged.listUsed[n] != 0;
        plot.listLeaf.push_back({listLabel[compound.merged.listSettled[n].nCrystal], bUsed ? 0 : -1, !bUsed});
    }
    return plot;
}

}  // namespace tessera
