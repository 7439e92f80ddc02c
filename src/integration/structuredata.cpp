#include "integration/structuredata.h"

#include "integration/reflectionflags.h"

#include <gemmi/unitcell.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tessera {

namespace {

bool isNumber(double dfIntensity, double dfSigma)
{
    return std::isfinite(dfIntensity) && std::isfinite(dfSigma) && dfSigma > 0;
}

std::vector<ScaledIntensity> unmergedOf(const IntegrationResult& result)
{
    std::vector<ScaledIntensity> list;
    for (const Observation& observation : result.integrated.listObservation) {
        const ScaledIntensity one = {conventionalIndex(result.chosen.symmetry, observation.anIndex),
                                     observation.corrected(), observation.correctedSigma()};
        const bool bUsed = observation.isMeasured() && (observation.nFlags & g_nExcludingFlags) == 0;
        if (bUsed && isNumber(one.dfIntensity, one.dfSigma)) {
            list.push_back(one);
        }
    }
    return list;
}

std::vector<ScaledIntensity> mergedOf(const IntegrationResult& result)
{
    std::vector<ScaledIntensity> list;
    for (const MergedReflection& merged : result.quality.listMerged) {
        if (isNumber(merged.dfIntensity, merged.dfSigma)) {
            list.push_back({merged.anIndex, merged.dfIntensity, merged.dfSigma});
        }
    }
    return list;
}

const gemmi::SpaceGroup* groupOf(const IntegrationResult& result, bool& bChosen)
{
    const gemmi::SpaceGroup* pGroup = nullptr;
    if (result.spaceGroup) {
        pGroup = gemmi::find_spacegroup_by_name(result.spaceGroup->strName.toStdString());
    }
    bChosen = pGroup != nullptr;
    if (!pGroup) {
        gemmi::GroupOps ops = result.chosen.symmetry.ops;
        ops.add_inversion();
        pGroup = gemmi::find_spacegroup_by_ops(ops);
    }
    return pGroup ? withCentreInOrigin(pGroup) : &gemmi::get_spacegroup_p1();
}

}  // namespace

const gemmi::SpaceGroup* withCentreInOrigin(const gemmi::SpaceGroup* pGroup)
{
    const auto isCentred = [](const gemmi::SpaceGroup& group) {
        for (const gemmi::Op& op : group.operations()) {
            if (op.rot == gemmi::Op::identity().negated_rot() && op.tran == gemmi::Op::Tran{0, 0, 0}) {
                return true;
            }
        }
        return false;
    };
    if (!pGroup->is_centrosymmetric() || isCentred(*pGroup)) {
        return pGroup;
    }
    for (const gemmi::SpaceGroup& other : gemmi::spacegroup_tables::main) {
        if (std::strcmp(other.hm, pGroup->hm) == 0 && isCentred(other)) {
            return &other;
        }
    }
    return pGroup;
}

std::vector<gemmi::Op> basicOperations(const gemmi::SpaceGroup& group)
{
    std::vector<gemmi::Op> listOp;
    const gemmi::GroupOps ops = group.operations();
    for (const gemmi::Op& op : ops.sym_ops) {
        const bool bThere = std::any_of(listOp.begin(), listOp.end(), [&](const gemmi::Op& other) {
            return other.rot == op.rot || other.rot == op.negated_rot();
        });
        if (!bThere || !group.is_centrosymmetric()) {
            listOp.push_back(op);
        }
    }
    return listOp;
}

StructureData structureData(const IntegrationResult& result, const StructureOptions& options)
{
    StructureData data;
    data.strName = options.strName;
    data.dfWavelength = options.dfWavelength;
    data.cell = result.cell;
    data.cellErrors = result.cellErrors;
    const CellParameters& c = data.cell;
    data.dfVolume = gemmi::UnitCell(c.a, c.b, c.c, c.alpha, c.beta, c.gamma).volume;
    data.pSpaceGroup = groupOf(result, data.bGroupChosen);
    data.formula = options.formula;
    data.bUnitsTold = options.nUnits > 0;
    data.nUnits = data.bUnitsTold ? options.nUnits
                                  : formulaUnits(data.formula, data.dfVolume, data.pSpaceGroup->operations());
    data.listUnmerged = unmergedOf(result);
    data.listMerged = mergedOf(result);
    data.quality = result.quality.overall;
    data.strLaueClass = result.chosen.strClass;
    data.rotation = result.series.rotation;
    data.nCrystals = options.nCrystals;
    data.strChoice = options.strChoice;
    data.nFrames = result.series.frameCount();
    if (data.nFrames > 0) {
        data.dfTiltFirst = result.series.listTilt.front();
        data.dfTiltLast = result.series.listTilt.back();
    }
    data.nRejected = int(result.integrated.listObservation.size() - data.listUnmerged.size());
    return data;
}

}  // namespace tessera
