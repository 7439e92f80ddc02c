#include "window/integration/disccolors.h"

#include "integration/reflectionflags.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>

namespace tessera {

namespace {

QString tr(const char* pszText)
{
    return QCoreApplication::translate("DiscColors", pszText);
}

}  // namespace

const std::vector<DiscClass>& discClasses()
{
    // Different from the yellow of masks and the cyan of the expected positions.
    static const std::vector<DiscClass> listClass = {
        {FlagOutlier, QColor(255, 40, 40), tr("outlier")},
        {FlagSaturated, QColor(255, 130, 200), tr("saturated")},
        {FlagOverlap, QColor(220, 60, 255), tr("overlap")},
        {FlagOffFrame | FlagMasked | FlagNearBeam | FlagBlankFrame, QColor(255, 140, 0),
         tr("cut off or masked")},
        {FlagSlow | FlagBeginsBefore | FlagEndsAfter, QColor(80, 130, 255), tr("slow or not whole")},
        {FlagBadBackground | FlagBadProfile | FlagNotFinite, QColor(170, 120, 70),
         tr("bad background or shape")},
        {0, QColor(60, 220, 60), tr("measured")}};
    return listClass;
}

QColor discColor(unsigned nFlags)
{
    const std::vector<DiscClass>& listClass = discClasses();
    const auto it = std::find_if(listClass.begin(), listClass.end(),
                                 [nFlags](const DiscClass& discs) { return (discs.nFlags & nFlags) != 0; });
    return it == listClass.end() ? listClass.back().color : it->color;
}

QString discLegend()
{
    QStringList listEntry;
    for (auto it = discClasses().rbegin(); it != discClasses().rend(); ++it) {
        // No break between the ring and the first word.
        listEntry.append(
            QStringLiteral("<span style='color:%1'>●</span>&nbsp;%2").arg(it->color.name(), it->strName));
    }
    return listEntry.join(QStringLiteral(", "));
}

}  // namespace tessera
