#include "merge/mergeoptions.h"

#include "batch/optionreader.h"
#include "road/intensities.h"

#include <QCommandLineParser>
#include <QFile>

namespace tessera {

namespace {

/// Adds all options with their help to the parser.
void addOptions(QCommandLineParser& parser)
{
    const CrystalsJobOptions usual;
    parser.addOptions({
        {"out", "Folder of the merged files; created if necessary. Required.", "folder"},
        {"name", "First part of the names of the files; default: the name of that folder.", "name"},
        {"list", "File with further folders of results, one per line; - reads it from the standard input.",
         "file"},
        {"known",
         "Table of known cells (CSV: name,a,b,c,alpha,beta,gamma, then space group or centring, formula): "
         "groups are named after the one with their lattice.",
         "file"},
        {"tolerance",
         QStringLiteral("Largest difference of an edge between lattices of one compound; default %1 [%].")
             .arg(usual.tolerance.dfLengths),
         "number"},
        {"tolerance-angles",
         QStringLiteral(
             "Largest difference of an angle between lattices of one compound; default %1 [degrees].")
             .arg(usual.tolerance.dfAngles),
         "number"},
        {"keep-all", "Merge also crystals that lower CC1/2."},
        {"least",
         QStringLiteral("Groups of fewer crystals are listed, but not merged; default %1.")
             .arg(usual.nLeastCrystals),
         "number"},
        {"d-min", "Merge to this resolution; default auto, as far as reflections were measured [Å].",
         "number"},
        {"laue",
         "Laue class in which intensities are merged, such as 4/mmm or -3m1; default: the one with which "
         "they agree.",
         "class"},
        {"space-group", "Number of the space group, 1 to 230; default: the best by its absences.", "number"},
        {"formula", "Chemical formula of the crystals, if it is not in the table of known cells.", "formula"},
        {"formula-units", "Formula units in a cell; default: estimated from its volume.", "number"},
        {"strict", "Exit status 1 also if an input gives no crystal or a group cannot be merged."},
        {"jobs", "Threads; the files are the same for every number; default: one per core.", "number"},
    });
}

/// Reads the formula of the crystals.
void takeFormula(COptionReader& reader, CrystalsJobOptions& job)
{
    const QString strOption = QStringLiteral("formula");
    if (!reader.isSet(strOption)) {
        return;
    }
    QString strReason;
    const QString strText = reader.name(strOption);
    const std::optional<ChemicalFormula> formula = chemicalFormula(strText, &strReason);
    if (formula) {
        job.formula = *formula;
    } else {
        reader.refuse(QStringLiteral("--formula %1: %2").arg(strText, strReason));
    }
}

/// Reads the name that the files begin with. It must not lead out of the folder of the merged files.
void takeName(COptionReader& reader, CrystalsJobOptions& job)
{
    job.strName = reader.name(QStringLiteral("name"));
    if (job.strName.contains(QLatin1Char('/')) || job.strName == QLatin1String(".") ||
        job.strName == QLatin1String("..")) {
        reader.refuse(QStringLiteral("--name %1: must be a name without folders").arg(job.strName));
    }
    if (job.strName.toUtf8().size() > g_nLongestJobName) {
        reader.refuse(QStringLiteral("--name: longer than %1 bytes").arg(g_nLongestJobName));
    }
}

/// Reads all options but the folders of results, and checks their values.
void takeOptions(COptionReader& reader, MergeOptions& options)
{
    CrystalsJobOptions& job = options.job;
    job.strOutFolder = reader.name(QStringLiteral("out"));
    if (!reader.isSet(QStringLiteral("out"))) {
        reader.refuse(QStringLiteral("--out: give a folder for the merged files"));
    }
    takeName(reader, job);
    options.strListFile = reader.name(QStringLiteral("list"));
    job.strKnownCellsFile = reader.name(QStringLiteral("known"));
    // Both ranges, in per cent and in degrees, end at 10: beyond it one reduced cell is like another.
    job.tolerance.dfLengths = reader.number(QStringLiteral("tolerance"), 0.01, 10, AutoValue::NotAllowed)
                                  .value_or(job.tolerance.dfLengths);
    job.tolerance.dfAngles = reader
                                 .number(QStringLiteral("tolerance-angles"), 0.01, 10, AutoValue::NotAllowed)
                                 .value_or(job.tolerance.dfAngles);
    job.merge.bKeepAll = reader.isSet(QStringLiteral("keep-all"));
    job.nLeastCrystals = reader.wholeNumber(QStringLiteral("least"), 1, 1000000, job.nLeastCrystals);
    job.merge.judgement.dfDMin =
        reader.number(QStringLiteral("d-min"), 0.1, 100, AutoValue::Allowed).value_or(0);
    job.merge.judgement.strLaueClass = laueClassNames().value(reader.choice(
        QStringLiteral("laue"), laueClassNames(), -1));  // −1: an empty name, by the intensities
    // Of the next numbers 0 means that the merging finds them itself.
    job.merge.judgement.nSpaceGroup = reader.wholeNumber(QStringLiteral("space-group"), 1, 230, 0);
    takeFormula(reader, job);
    job.nUnits = reader.wholeNumber(QStringLiteral("formula-units"), 1, 10000, 0);
    options.bStrict = reader.isSet(QStringLiteral("strict"));
    job.nJobs = reader.wholeNumber(QStringLiteral("jobs"), 1, 256, 0);
}

}  // namespace

QStringList foldersOfList(const QByteArray& bytes)
{
    QStringList listFolder;
    const bool bZeros = bytes.contains('\0');
    for (QByteArray line : bytes.split(bZeros ? '\0' : '\n')) {
        if (!bZeros && line.endsWith('\r')) {
            line.chop(1);
        }
        if (!line.trimmed().isEmpty() && (bZeros || !line.startsWith('#'))) {
            listFolder.append(QFile::decodeName(line));
        }
    }
    return listFolder;
}

ParsedMerge parseMergeOptions(const QStringList& listArgument)
{
    ParsedMerge parsed;
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "From the results of many series to merged intensities: distinguishes compounds by their lattices, "
        "transforms the crystals of each to one setting and one scale, leaves out those that lower CC1/2, "
        "merges the others, and writes the files of a single crystal: lists of intensities, .ins, .cif, "
        ".mtz; with a table of the crystals, trees and a report. "
        "The last lines of a run are a summary.\nExit status: 0 crystals were merged, inputs that could not "
        "be read were reported; 1 nothing was merged, or a file could not be written; 2 bad usage."));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("results"),
        QStringLiteral(
            "Folders to which tessera-batch has written its results, or that contain such folders."),
        QStringLiteral("RESULT_FOLDERS..."));
    addOptions(parser);
    if (!parser.parse(listArgument)) {
        parsed.strError = parser.errorText();
    } else if (parser.isSet(helpOption)) {
        parsed.strHelp = parser.helpText();
    } else if (parser.isSet(versionOption)) {
        parsed.strHelp = QStringLiteral("tessera-merge " TESSERA_VERSION "\n");
    } else {
        COptionReader reader(parser);
        parsed.options.job.listFolder = parser.positionalArguments();
        takeOptions(reader, parsed.options);
        if (parsed.options.job.listFolder.isEmpty() && parsed.options.strListFile.isEmpty()) {
            reader.refuse(QStringLiteral("no folders of results given"));
        }
        parsed.strError = reader.error();
    }
    return parsed;
}

}  // namespace tessera
