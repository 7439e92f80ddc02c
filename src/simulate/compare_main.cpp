// tessera-compare: compares the results of a simulated series with its truth.
#include "simulate/seriescomparison.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>

#include <cstdio>

int main(int argc, char** argv)
{
    using namespace tessera;
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessera-compare"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Compares the peak list (.pk), unit cell (.uc), refined basis (_refined.uc), indexed peaks (.ipf) "
        "and "
        "intensities (_integrated.hkl and _merged.hkl with the cell of .ins or .cif) of a simulated series "
        "with its truth.\nWith two crystals on the frames the cell may be that of either, and the indices "
        "are compared for each.\nExit status: 0 the lattice is right, 1 it is not, 2 bad usage or unreadable "
        "files."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print JSON instead of a table.")});
    parser.addOption(
        {QStringLiteral("summary"),
         QStringLiteral(
             "The --json file of tessera-batch: compares its refined cell and geometry, system and "
             "centring, Laue class and space groups too."),
         QStringLiteral("file")});
    parser.addPositionalArgument(QStringLiteral("TRUTH"), QStringLiteral("the simulator's truth file"));
    parser.addPositionalArgument(QStringLiteral("BASE"),
                                 QStringLiteral("folder and base name of the results, no extension"));
    if (!parser.parse(app.arguments())) {
        std::fprintf(stderr, "%s\n", qPrintable(parser.errorText()));
        return 2;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    const QStringList listArgument = parser.positionalArguments();
    if (listArgument.size() != 2) {
        std::fprintf(stderr, "Two arguments are needed: TRUTH BASE\n");
        return 2;
    }
    QString strError;
    const std::optional<SeriesComparison> comparison = compareSeriesFiles(
        listArgument[0], listArgument[1], parser.value(QStringLiteral("summary")), strError);
    if (!comparison) {
        std::fprintf(stderr, "%s\n", qPrintable(strError));
        return 2;
    }
    const QByteArray text = parser.isSet(QStringLiteral("json"))
                                ? QJsonDocument(comparisonToJson(*comparison)).toJson()
                                : comparisonToText(*comparison).toUtf8();
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    return comparison->lattice.isRight() ? 0 : 1;
}
