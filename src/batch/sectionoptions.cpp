#include "batch/sectionoptions.h"

#include "road/intensities.h"

#include <QCommandLineParser>

#include <algorithm>

namespace tessera {

void addSectionOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {"sections",
         "Write planes of reciprocal space after the last stage, as NAME_hk0.mrc and NAME_hk0.png: a list "
         "such as hk0,h0l,0kl,hk1,h-2l, or the option given several times; also \"[u v w]\" and "
         "\"[u v w]=n\" for the layers of a zone axis. They need a cell.",
         "plane,..."},
        {"section-thickness",
         "Thickness of the sections in Å⁻¹; default 0: the width of the spots, at most half the distance of "
         "the layers.",
         "number"},
        {"section-d-min", "Resolution of the sections in Å; default 0: slightly beyond the indexed peaks.",
         "number"},
        {"section-laue",
         "Laue class in which equivalent planes are averaged, such as 4/mmm; default: none, no averaging.",
         "class"},
        {"section-background",
         "on: counts as they are; off: subtract from each pixel the median of its ring about the direct "
         "beam; default on.",
         "on|off"},
    });
}

void takeSections(COptionReader& reader, ExportOptions& exports)
{
    for (const QString& strList : reader.values(QStringLiteral("sections"))) {
        for (const QString& strPlane : strList.split(QLatin1Char(','))) {
            QString strReason;
            const std::optional<SectionPlane> plane = sectionPlane(strPlane, &strReason);
            const auto same = [&](const SectionPlane& other) { return other.strName == plane->strName; };
            if (!plane) {
                reader.refuse(QStringLiteral("--sections %1").arg(strReason));
            } else if (std::none_of(exports.listSection.begin(), exports.listSection.end(), same)) {
                exports.listSection.push_back(*plane);
            }
        }
    }
    SectionOptions& section = exports.section;
    section.dfThickness =
        reader.number(QStringLiteral("section-thickness"), 0, 1, AutoValue::NotAllowed).value_or(0);
    const double dfMinimum =
        reader.number(QStringLiteral("section-d-min"), 0, 100, AutoValue::NotAllowed).value_or(0);
    section.dfMaxDStar = dfMinimum > 0 ? 1 / dfMinimum : 0;
    const QStringList& listClass = laueClassNames();
    section.strLaueClass = listClass.value(reader.choice(QStringLiteral("section-laue"), listClass, -1));
    section.bWithoutRings = reader.choice(QStringLiteral("section-background"), {"on", "off"}, 0) == 1;
}

}  // namespace tessera
