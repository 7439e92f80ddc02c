#include "integration/ciffile.h"

#include "integration/electronscattering.h"
#include "records/pi.h"
#include "records/sealedfile.h"

#include <gemmi/cifdoc.hpp>
#include <gemmi/to_cif.hpp>
#include <gemmi/unitcell.hpp>

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace tessera {

namespace {

using gemmi::cif::Block;
using gemmi::cif::Loop;

std::string number(double dfValue, int nDecimals)
{
    return QByteArray::number(dfValue, 'f', nDecimals).toStdString();
}

void putText(Block& block, const char* pszTag, const QString& strText)
{
    block.set_pair(pszTag, gemmi::cif::quote(strText.toStdString()));
}

void putNumber(Block& block, const char* pszTag, double dfValue, int nDecimals)
{
    if (std::isfinite(dfValue)) {
        block.set_pair(pszTag, number(dfValue, nDecimals));
    }
}

/// "9.8844(10)": a number with its standard error in units of the last digit; the error has two digits if the
/// first is 1.
std::string withError(double dfValue, double dfError, int nDecimals)
{
    if (!(dfError > 0) || !std::isfinite(dfError)) {
        return number(dfValue, nDecimals);
    }
    const int nShown = int(std::clamp(std::ceil(std::log10(1.95 / dfError)), 0.0, 6.0));
    const double dfUnits = std::max(1.0, std::round(dfError * std::pow(10.0, nShown)));
    return number(dfValue, nShown) + '(' + number(dfUnits, 0) + ')';
}

void putCell(Block& block, const StructureData& data)
{
    static const char* const apszTag[] = {"_cell_length_a",    "_cell_length_b",   "_cell_length_c",
                                          "_cell_angle_alpha", "_cell_angle_beta", "_cell_angle_gamma"};
    const std::array<double, 6> adfCell = data.cell.numbers();
    const std::array<double, 6> adfError = data.cellErrors.numbers();
    for (size_t n = 0; n < 6; ++n) {
        block.set_pair(apszTag[n], withError(adfCell[n], adfError[n], n < 3 ? 4 : 3));
    }
    putNumber(block, "_cell_volume", data.dfVolume, 2);
    if (!data.formula.isEmpty()) {
        block.set_pair("_cell_formula_units_Z", std::to_string(data.nUnits));
        putText(block, "_chemical_formula_sum", hillFormula(data.formula));
    }
}

void putSymmetry(Block& block, const gemmi::SpaceGroup& group)
{
    putText(block, "_space_group_crystal_system", QLatin1String(group.crystal_system_str()));
    block.set_pair("_space_group_IT_number", std::to_string(group.number));
    putText(block, "_space_group_name_H-M_alt", QString::fromStdString(group.xhm()));
    putText(block, "_space_group_name_Hall", QLatin1String(group.hall));
    Loop& loop = block.init_loop("_space_group_symop_", {"operation_xyz"});
    for (const gemmi::Op& op : group.operations()) {
        loop.add_row({gemmi::cif::quote(op.triplet())});
    }
}

/// The accelerating voltage (kV) for a wavelength (Å): the positive root of E² + 2mc²E = (hc/λ)².
/// The constants are those of electronWavelength().
double kilovoltsOf(double dfWavelength)
{
    const double dfRestEnergy = 510.99895069;  // keV
    const double dfHc = 12.398419843320026;    // keV Å
    const double dfMomentum = dfHc / dfWavelength;
    return std::hypot(dfMomentum, dfRestEnergy) - dfRestEnergy;
}

QString methodOf(const RotationMode& rotation)
{
    switch (rotation.kind) {
        case RotationKind::Continuous:
            return QStringLiteral("continuous rotation");
        case RotationKind::Stepped:
            return QStringLiteral("stepwise rotation");
        case RotationKind::Precession:
            break;
    }
    return QStringLiteral("stepwise rotation, beam precession of %1 degrees").arg(rotation.dfPrecessionAngle);
}

void putExperiment(Block& block, const StructureData& data)
{
    putText(block, "_exptl_absorpt_correction_type", QStringLiteral("none"));
    putText(block, "_diffrn_radiation_probe", QStringLiteral("electron"));
    putText(block, "_diffrn_radiation_type", QStringLiteral("electron"));
    putNumber(block, "_diffrn_radiation_wavelength", data.dfWavelength, 6);
    putText(block, "_diffrn_source", QStringLiteral("transmission electron microscope"));
    if (data.dfWavelength > 0) {
        putNumber(block, "_diffrn_source_voltage", std::round(10 * kilovoltsOf(data.dfWavelength)) / 10, 1);
    }
    putText(block, "_diffrn_measurement_method", methodOf(data.rotation));
    if (data.nCrystals > 0) {
        putText(block, "_diffrn_measurement_details",
                QStringLiteral("rotation series of %1")
                    .arg(data.nCrystals == 1
                             ? QStringLiteral("one crystal")
                             : QStringLiteral("%1 crystals, brought to one scale").arg(data.nCrystals)));
        return;
    }
    // The file is ASCII only.
    const QString strChoice = QString(data.strChoice).replace(QChar(0xd7), QLatin1Char('x'));
    putText(block, "_diffrn_measurement_details",
            QStringLiteral("%1 frames%2, tilt from %3 to %4 degrees")
                .arg(data.nFrames)
                .arg(strChoice.isEmpty() ? QString() : QStringLiteral(" (of the series: %1)").arg(strChoice))
                .arg(data.dfTiltFirst, 0, 'f', 2)
                .arg(data.dfTiltLast, 0, 'f', 2));
}

/// sin θ / λ = d* / 2 of the indices, Å⁻¹.
double sineOf(const gemmi::UnitCell& cell, const std::array<int, 3>& anIndex)
{
    return std::sqrt(cell.calculate_1_d2({{anIndex[0], anIndex[1], anIndex[2]}})) / 2;
}

void putLimits(Block& block, const StructureData& data, const gemmi::UnitCell& cell)
{
    static const char* const apszAxis[] = {"h", "k", "l"};
    double dfLeast = HUGE_VAL;
    double dfMost = 0;
    for (size_t n = 0; n < 3 && !data.listUnmerged.empty(); ++n) {
        const auto limits = std::minmax_element(
            data.listUnmerged.begin(), data.listUnmerged.end(),
            [&](const ScaledIntensity& a, const ScaledIntensity& b) { return a.anIndex[n] < b.anIndex[n]; });
        const std::string strTag = std::string("_diffrn_reflns_limit_") + apszAxis[n];
        block.set_pair(strTag + "_min", std::to_string(limits.first->anIndex[n]));
        block.set_pair(strTag + "_max", std::to_string(limits.second->anIndex[n]));
    }
    for (const ScaledIntensity& one : data.listUnmerged) {
        dfLeast = std::min(dfLeast, sineOf(cell, one.anIndex));
        dfMost = std::max(dfMost, sineOf(cell, one.anIndex));
    }
    if (dfMost > 0 && dfMost * data.dfWavelength < 1) {
        const auto degrees = [&](double dfS) { return std::asin(dfS * data.dfWavelength) * 180 / g_dfPi; };
        putNumber(block, "_diffrn_reflns_theta_min", degrees(dfLeast), 3);
        putNumber(block, "_diffrn_reflns_theta_max", degrees(dfMost), 3);
        putNumber(block, "_reflns_d_resolution_low", 0.5 / dfLeast, 3);
        putNumber(block, "_reflns_d_resolution_high", 0.5 / dfMost, 3);
    }
}

/// The agreement of equivalents. Some figures do not exist if nothing was measured twice.
QString mergingText(const StructureData& data)
{
    const ShellQuality& quality = data.quality;
    QStringList listPart = {QStringLiteral("Laue class of the merging %1").arg(data.strLaueClass)};
    const auto add = [&listPart](const char* pszName, double dfValue, int nDecimals) {
        if (std::isfinite(dfValue)) {
            listPart.append(
                QStringLiteral("%1 %2").arg(QLatin1String(pszName)).arg(dfValue, 0, 'f', nDecimals));
        }
    };
    add("Rmeas", quality.dfRMeas, 4);
    add("CC1/2", quality.dfCcHalf, 4);
    add("multiplicity", quality.dfMultiplicity, 2);
    add("mean I/u(I)", quality.dfIOverSigma, 2);
    const QString strFirst = listPart.takeFirst();
    return listPart.isEmpty() ? strFirst
                              : strFirst + QStringLiteral("; ") + listPart.join(QStringLiteral(", "));
}

void putQuality(Block& block, const StructureData& data, const gemmi::UnitCell& cell)
{
    const ShellQuality& quality = data.quality;
    block.set_pair("_diffrn_reflns_number", std::to_string(data.listUnmerged.size()));
    putNumber(block, "_diffrn_reflns_av_R_equivalents", quality.dfRInt, 4);
    double dfSum = 0;
    double dfSumSigma = 0;
    for (const ScaledIntensity& one : data.listMerged) {
        dfSum += one.dfIntensity;
        dfSumSigma += one.dfSigma;
    }
    putNumber(block, "_diffrn_reflns_av_unetI/netI", dfSumSigma / dfSum, 4);
    putNumber(block, "_diffrn_measured_fraction_theta_max", quality.dfCompleteness, 4);
    putLimits(block, data, cell);
    block.set_pair("_reflns_number_total", std::to_string(data.listMerged.size()));
    const auto nAbove = std::count_if(
        data.listMerged.begin(), data.listMerged.end(),
        [](const ScaledIntensity& one) { return one.dfIntensity > 2 * one.dfSigma; });
    block.set_pair("_reflns_number_gt", std::to_string(nAbove));
    putText(block, "_reflns_threshold_expression", QStringLiteral("I > 2u(I)"));
    putText(block, "_reflns_special_details", mergingText(data));
}

void putElements(Block& block, const ChemicalFormula& formula)
{
    if (formula.isEmpty()) {
        return;
    }
    Loop& loop = block.init_loop("_atom_type_", {"symbol", "scat_source"});
    for (const ElementCount& one : formula.listElement) {
        loop.add_row({gemmi::element_name(one.element),
                      gemmi::cif::quote("International Tables Vol. C Table 4.3.2.2")});
    }
}

void putReflections(Block& block, const StructureData& data, double dfScale)
{
    Loop& loop = block.init_loop("_refln_",
                                 {"index_h", "index_k", "index_l", "F_squared_meas", "F_squared_sigma"});
    loop.values.reserve(5 * data.listMerged.size());
    for (const ScaledIntensity& one : data.listMerged) {
        for (const int nIndex : one.anIndex) {
            loop.values.push_back(std::to_string(nIndex));
        }
        loop.values.push_back(number(one.dfIntensity * dfScale, 3));
        loop.values.push_back(number(one.dfSigma * dfScale, 3));
    }
}

/// A name for a data block, which may contain only printable ASCII without blanks.
std::string blockName(const QString& strName)
{
    std::string str;
    for (const QChar ch : strName) {
        str += ch > QLatin1Char(' ') && ch < QLatin1Char('\x7f') ? ch.toLatin1() : '_';
    }
    return str.empty() ? "series" : str;
}

}  // namespace

QByteArray cifText(const StructureData& data, double dfScale)
{
    Block block(blockName(data.strName));
    putText(block, "_audit_creation_method", QStringLiteral("Tessera " TESSERA_VERSION));
    putCell(block, data);
    putSymmetry(block, *data.pSpaceGroup);
    putExperiment(block, data);
    const CellParameters& c = data.cell;
    putQuality(block, data, gemmi::UnitCell(c.a, c.b, c.c, c.alpha, c.beta, c.gamma));
    putElements(block, data.formula);
    putReflections(block, data, dfScale);
    std::ostringstream stream;
    stream << "# Tessera " TESSERA_VERSION " " << sealPlace().toStdString() << '\n';
    gemmi::cif::write_cif_block_to_stream(stream, block, gemmi::cif::Style::Simple);
    return sealed(QByteArray::fromStdString(stream.str()));
}

}  // namespace tessera
