#include "road/roadcommand.h"

#include "dataset/parametertable.h"
#include "refinement/geometrynumbers.h"
#include "road/roadnumbers.h"

#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>

namespace tessera {

namespace {

/// The shortest text that represents the number exactly.
QString exact(double dfValue)
{
    return QString::number(dfValue, 'g', QLocale::FloatingPointShortest);
}

QString absolute(const QString& strFile)
{
    return QFileInfo(strFile).absoluteFilePath();
}

class CArguments {
public:
    void flag(bool bSet, const char* pszName)
    {
        if (bSet) {
            m_list.append(QStringLiteral("--") + QLatin1String(pszName));
        }
    }
    /// @param strValue  empty: the option is left out
    void text(const char* pszName, const QString& strValue)
    {
        // A value that begins with a dash, such as a negative angle, would be read as an option.
        if (!strValue.isEmpty()) {
            m_list.append(QStringLiteral("--%1=").arg(QLatin1String(pszName)) + strValue);
        }
    }
    void file(const char* pszName, const QString& strFile)
    {
        text(pszName, strFile.isEmpty() ? QString() : absolute(strFile));
    }
    void number(const char* pszName, const std::optional<double>& dfGiven)
    {
        text(pszName, dfGiven ? exact(*dfGiven) : QString());
    }
    void numberUnless(const char* pszName, double dfValue, double dfDefault)
    {
        text(pszName, dfValue == dfDefault ? QString() : exact(dfValue));
    }

    QStringList m_list;
};

void putReading(CArguments& arguments, const RoadOptions& o)
{
    if (o.sizeFrame.isValid()) {
        arguments.text("size", QStringLiteral("%1x%2").arg(o.sizeFrame.width()).arg(o.sizeFrame.height()));
    }
    if (!o.choice) {
        return;
    }
    const SeriesChoice& choice = *o.choice;
    // --bin 1 requests the series as it is, even if a choice is saved beside it.
    arguments.text("bin", choice.nBin > 1 || choice.isPlain() ? QString::number(choice.nBin) : QString());
    arguments.text("sum", choice.nSum > 1 ? QString::number(choice.nSum) : QString());
    arguments.text("frames", frameRangesText(choice.listFrames));
    arguments.text("skip", frameRangesText(choice.listSkipped));
}

void putPlaces(CArguments& arguments, const RoadOptions& o)
{
    static const RoadOptions standard;
    if (!o.exports.bOnly) {
        const RoadStage stageTo = std::max(standard.stageTo, o.stageFrom);
        arguments.text("from", o.stageFrom == standard.stageFrom ? QString() : roadStageName(o.stageFrom));
        arguments.text("to", o.stageTo == stageTo ? QString() : roadStageName(o.stageTo));
    }
    arguments.file("out", o.strOutDir);
    arguments.file("mask", o.strMaskFile);
    arguments.text("defects", o.bFindDefects ? QString() : QStringLiteral("off"));
    arguments.flag(o.bIgnoreHotPixelList, "ignore-hot-pixels");
    arguments.file("cell", o.strCellFile);
    arguments.file("calibration", o.strCalibrationFile);
    arguments.file("save-calibration", o.strSaveCalibrationFile);
    if (o.rcRegion) {
        arguments.text(
            "region",
            QStringLiteral("%1,%2,%3").arg(o.rcRegion->x()).arg(o.rcRegion->y()).arg(o.rcRegion->width()));
    }
    if (!o.strKnownCellFile.isEmpty()) {
        arguments.file("known-cell", o.strKnownCellFile);
    } else if (o.knownCell) {
        QStringList listNumber;
        for (const double df : o.knownCell->numbers()) {
            listNumber.append(exact(df));
        }
        arguments.text("known-cell", listNumber.join(QLatin1Char(',')));
    }
}

/// Adds the parameters of the pages; those without an option are listed separately.
void putNumbers(RoadCommand& command, CArguments& arguments, RoadOptions o)
{
    const ParameterRecords records = {nullptr,     &o.hunting, nullptr,       &o.merging, &o.cell,
                                      &o.indexing, nullptr,    &o.refinement, nullptr};
    for (const Parameter& row : parameterTable()) {
        const std::optional<double>* pGiven = givenNumber(o, row.member);
        if (row.member == ParameterMember(&IndexingParameters::m_nSpaceGroup)) {
            continue;  // not a plain number, see putIntensities()
        }
        if (pGiven && row.option.pszName) {
            arguments.number(row.option.pszName, *pGiven);
        } else if (row.isIn(records) && row.value(records) != row.start()) {
            if (row.option.pszName) {
                arguments.text(row.option.pszName, exact(row.value(records)));
            } else {
                command.listUnsaid.append(
                    QStringLiteral("%1 (%2)").arg(exact(row.value(records)), QString::fromUtf8(row.pszTip)));
            }
        }
        if (const auto* pMember = std::get_if<double SeriesDistortion::*>(&row.member)) {
            for (const auto& [pGivenMember, dfValue] : o.listDistortion) {
                if (pGivenMember == *pMember) {
                    arguments.text(row.option.pszName, exact(dfValue));
                }
            }
        }
    }
    if (o.bFindAxis) {
        arguments.text("axis", QStringLiteral("auto"));
    }
    arguments.number("tilt-start", o.dfTiltStart);
    arguments.number("tilt-step", o.dfTiltStep);
}

void putChoices(CArguments& arguments, const RoadOptions& o)
{
    static const char* const aszMethod[] = {"vectors", "directions", "best"};
    if (o.bApplyStretching) {
        arguments.text("apply-stretching",
                       *o.bApplyStretching ? QStringLiteral("on") : QStringLiteral("off"));
    }
    if (o.cellMethod) {
        arguments.text("cell-method", QLatin1String(aszMethod[int(*o.cellMethod)]));
    }
    if (o.nGroup >= 0) {
        arguments.text("group", QString::number(o.nGroup));
    }
    if (o.nJobs > 0) {
        arguments.text("jobs", QString::number(o.nJobs));
    }
    arguments.text("intensity-in-frames", o.merging.m_bIntegrate2D ? QString() : QStringLiteral("point"));
    arguments.text("intensity-through-frames",
                   o.merging.m_bIntegrateThroughFrames ? QStringLiteral("3d") : QString());
    arguments.text("setting", o.bConventional ? QStringLiteral("conventional") : QString());
    arguments.flag(o.bAccept, "accept");
    arguments.flag(o.bWindowDefaults, "window-defaults");
    arguments.flag(o.indexing.m_bOutputStatistics, "statistics");
    arguments.flag(o.bConstantBackground, "constant-background");
    arguments.flag(o.refinement.m_bOutputPeakList, "pair-list");
    QStringList listFixed;
    for (const int nNumber : o.listFixedGeometry) {
        listFixed.append(geometryNumberName(nNumber));
    }
    arguments.text("fix-geometry", listFixed.join(QLatin1Char(',')));
}

QString formulaText(const ChemicalFormula& formula)
{
    QString strText;
    for (const ElementCount& element : formula.listElement) {
        strText += QLatin1String(gemmi::element_name(element.element)) + exact(element.dfCount);
    }
    return strText;
}

void putIntensities(RoadCommand& command, CArguments& arguments, const RoadOptions& o)
{
    static const IntensityOptions standard;
    const IntensityOptions& intensities = o.intensities;
    arguments.text("rotation", intensities.rotation ? rotationModeText(*intensities.rotation) : QString());
    arguments.text("formula", formulaText(intensities.formula));
    if (intensities.nUnits > 0) {
        arguments.text("formula-units", QString::number(intensities.nUnits));
    }
    arguments.numberUnless("d-min", intensities.dfDMin, standard.dfDMin);
    arguments.text("laue", intensities.strLaueClass);
    arguments.flag(!intensities.bProfileFit, "no-profile");
    arguments.flag(!intensities.bScale, "no-scale");
    const int nGroup = o.indexing.m_nSpaceGroup;
    if (intensities.nSpaceGroup > 0) {
        arguments.text("space-group", QString::number(intensities.nSpaceGroup));
    }
    if (nGroup != IndexingParameters().m_nSpaceGroup && nGroup != intensities.nSpaceGroup) {
        command.listUnsaid.append(
            QStringLiteral("space group %1 of the reflection groups alone").arg(nGroup));
    }
    if (intensities.bDecay != intensities.bScale) {
        command.listUnsaid.append(QStringLiteral("scale and decay not alike"));
    }
    if (intensities.dfDiscRadius != standard.dfDiscRadius ||
        intensities.dfRockingWidth != standard.dfRockingWidth ||
        intensities.dfRejection != standard.dfRejection) {
        command.listUnsaid.append(QStringLiteral("disc radius %1 pixels, rocking width %2 Å⁻¹, rejection %3")
                                      .arg(exact(intensities.dfDiscRadius), exact(intensities.dfRockingWidth),
                                           exact(intensities.dfRejection)));
    }
}

void putExports(CArguments& arguments, const ExportOptions& exports)
{
    static const ExportOptions standard;
    QStringList listKind;
    for (const ExportKind kind : exports.listKind) {
        listKind.append(exportName(kind));
    }
    arguments.text("export", listKind.join(QLatin1Char(',')));
    arguments.flag(exports.bOnly, "export-only");
    arguments.file("export-folder", exports.strPictureFolder);
    arguments.text("export-format", exports.strPictureFormat == standard.strPictureFormat
                                        ? QString()
                                        : exports.strPictureFormat);
    arguments.numberUnless("scale", exports.dfScale, standard.dfScale);
    arguments.numberUnless("volume-edge", exports.nVolumeEdge, standard.nVolumeEdge);
    arguments.text("volume-type", exports.bVolumeScaled ? QStringLiteral("scaled") : QString());
    arguments.number("contrast-min", exports.dfContrastMin);
    arguments.number("contrast-max", exports.dfContrastMax);
    QStringList listPlane;
    for (const SectionPlane& plane : exports.listSection) {
        listPlane.append(plane.strName);
    }
    arguments.text("sections", listPlane.join(QLatin1Char(',')));
    arguments.numberUnless("section-thickness", exports.section.dfThickness, standard.section.dfThickness);
    arguments.numberUnless("section-d-min",
                           exports.section.dfMaxDStar > 0 ? 1 / exports.section.dfMaxDStar : 0, 0);
    arguments.text("section-laue", exports.section.strLaueClass);
    arguments.text("section-background", exports.section.bWithoutRings ? QStringLiteral("off") : QString());
}

}  // namespace

QString shellQuoted(const QString& strArgument)
{
    static const QRegularExpression plain(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z0-9_@%+=:,./-]+")));
    if (plain.match(strArgument).hasMatch()) {
        return strArgument;
    }
    QString strText = strArgument;
    strText.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QLatin1Char('\'') + strText + QLatin1Char('\'');
}

QString RoadCommand::line() const
{
    QStringList listWord;
    for (const QString& strArgument : listArgument) {
        listWord.append(shellQuoted(strArgument));
    }
    return listWord.join(QLatin1Char(' '));
}

RoadCommand commandOf(const RoadOptions& given)
{
    RoadCommand command;
    CArguments arguments;
    const QStringList& listInput = given.listInputGiven.isEmpty() ? given.listInput : given.listInputGiven;
    for (const QString& strInput : listInput) {
        arguments.m_list.append(absolute(strInput));
    }
    putReading(arguments, given);
    putPlaces(arguments, given);
    putNumbers(command, arguments, given);
    putChoices(arguments, given);
    putIntensities(command, arguments, given);
    putExports(arguments, given.exports);
    command.listArgument = QStringList{QStringLiteral("tessera-batch")} + arguments.m_list +
                           given.listCallerOption;
    return command;
}

}  // namespace tessera
