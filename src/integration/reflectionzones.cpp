#include "integration/reflectionzones.h"

#include "integration/asymmetricunit.h"

#include <QStringList>

#include <algorithm>
#include <cstdlib>

namespace tessera {

namespace {

using Index = std::array<int, 3>;

Index imageOf(const gemmi::Op& op, const Index& anIndex)
{
    const gemmi::Op::Rot rot = wholeRotation(op.rot);
    Index an = {};
    for (size_t n = 0; n < 3; ++n) {
        an[n] = anIndex[0] * rot[0][n] + anIndex[1] * rot[1][n] + anIndex[2] * rot[2][n];
    }
    return an;
}

bool isIdentity(const gemmi::Op& op)
{
    return op.rot == gemmi::Op::identity().rot;
}

/// Mirrors give planes, rotation axes give rows.
bool leavesInPlace(const gemmi::Op& op, const ReflectionZone& zone)
{
    return (op.det_rot() > 0) == zone.bRow && !isIdentity(op) &&
           std::all_of(zone.listSpan.begin(), zone.listSpan.end(),
                       [&](const Index& an) { return imageOf(op, an) == an; });
}

bool isEquivalent(const ReflectionZone& one, const ReflectionZone& other, const gemmi::GroupOps& laue)
{
    return one.bRow == other.bRow &&
           std::any_of(laue.sym_ops.begin(), laue.sym_ops.end(), [&](const gemmi::Op& op) {
               return std::all_of(one.listSpan.begin(), one.listSpan.end(),
                                  [&](const Index& an) { return other.contains(imageOf(op, an)); });
           });
}

/// The sum of indices in a condition.
struct Form {
    const char* pszText;
    Index anFactor;
};

const std::array<Form, 9> g_aForm = {{{"h", {1, 0, 0}},
                                      {"k", {0, 1, 0}},
                                      {"l", {0, 0, 1}},
                                      {"h+k", {1, 1, 0}},
                                      {"h+l", {1, 0, 1}},
                                      {"k+l", {0, 1, 1}},
                                      {"2h+l", {2, 0, 1}},
                                      {"-h+l", {-1, 0, 1}},
                                      {"h-k", {1, -1, 0}}}};

bool isMultiple(const Form& form, const Index& an, int nModulus)
{
    return (form.anFactor[0] * an[0] + form.anFactor[1] * an[1] + form.anFactor[2] * an[2]) % nModulus == 0;
}

bool isCentringAbsent(const gemmi::GroupOps& group, const Index& an)
{
    return std::any_of(group.cen_ops.begin(), group.cen_ops.end(), [&](const gemmi::Op::Tran& tran) {
        return (an[0] * tran[0] + an[1] * tran[1] + an[2] * tran[2]) % gemmi::Op::DEN != 0;
    });
}

/// Reflections of a plane that are on a row belong to the row.
std::vector<Index> smallReflections(const ReflectionZone& zone, const gemmi::GroupOps& laue)
{
    const int nMost = zone.bRow ? 12 : 8;
    std::vector<Index> list;
    for (int n = 0; n <= nMost; ++n) {
        for (int m = zone.bRow ? 0 : -nMost; m <= (zone.bRow ? 0 : nMost); ++m) {
            const Index& a = zone.listSpan.front();
            const Index& b = zone.listSpan.back();
            const Index an = {n * a[0] + m * b[0], n * a[1] + m * b[1], n * a[2] + m * b[2]};
            const bool bOnRow = std::any_of(
                laue.sym_ops.begin(), laue.sym_ops.end(), [&](const gemmi::Op& op) {
                    return op.det_rot() > 0 && !isIdentity(op) && imageOf(op, an) == an;
                });
            if (an != Index{0, 0, 0} && (zone.bRow || !bOnRow)) {
                list.push_back(an);
            }
        }
    }
    return list;
}

}  // namespace

bool ReflectionZone::contains(const Index& anIndex) const
{
    // The determinant with two spanning vectors, or the cross product with one.
    const Index& a = listSpan.front();
    const Index anCross = {a[1] * anIndex[2] - a[2] * anIndex[1], a[2] * anIndex[0] - a[0] * anIndex[2],
                           a[0] * anIndex[1] - a[1] * anIndex[0]};
    if (bRow) {
        return anCross == Index{0, 0, 0};
    }
    const Index& b = listSpan.back();
    return anCross[0] * b[0] + anCross[1] * b[1] + anCross[2] * b[2] == 0;
}

std::vector<ReflectionZone> reflectionZones(const gemmi::GroupOps& laue)
{
    const auto plane = [](const char* psz, const Index& one, const Index& other) {
        return ReflectionZone{QLatin1String(psz), false, {one, other}, {}};
    };
    const auto row = [](const char* psz, const Index& one) {
        return ReflectionZone{QLatin1String(psz), true, {one}, {}};
    };
    const bool bHexagonal = std::any_of(laue.sym_ops.begin(), laue.sym_ops.end(), [](const gemmi::Op& op) {
        return wholeRotation(op.rot)[0] == std::array<int, 3>{0, -1, 0} &&
               wholeRotation(op.rot)[1] == std::array<int, 3>{1, -1, 0};
    });
    std::vector<ReflectionZone> listAll = {plane("0kl", {0, 1, 0}, {0, 0, 1}),
                                           plane("h0l", {1, 0, 0}, {0, 0, 1}),
                                           plane("hk0", {1, 0, 0}, {0, 1, 0}),
                                           plane("hhl", {1, 1, 0}, {0, 0, 1}),
                                           plane("h-hl", {1, -1, 0}, {0, 0, 1}),
                                           row("h00", {1, 0, 0}),
                                           row("0k0", {0, 1, 0}),
                                           row("00l", {0, 0, 1}),
                                           row("hh0", {1, 1, 0}),
                                           row("h-h0", {1, -1, 0})};
    if (bHexagonal) {
        // International Tables name the zone h-hl, not its equivalents 0kl and h0l.
        std::rotate(listAll.begin(), listAll.begin() + 4, listAll.begin() + 5);
    }
    std::vector<ReflectionZone> listZone;
    for (const ReflectionZone& zone : listAll) {
        const bool bFixed = std::any_of(laue.sym_ops.begin(), laue.sym_ops.end(),
                                        [&](const gemmi::Op& op) { return leavesInPlace(op, zone); });
        const bool bKnown = std::any_of(listZone.begin(), listZone.end(), [&](const ReflectionZone& known) {
            return isEquivalent(zone, known, laue);
        });
        if (bFixed && !bKnown) {
            listZone.push_back(zone);
            listZone.back().listSmall = smallReflections(zone, laue);
        }
    }
    return listZone;
}

PlaceInZone placeInZone(const std::vector<ReflectionZone>& listZone, const gemmi::GroupOps& laue,
                        const Index& anIndex)
{
    PlaceInZone place;
    for (const gemmi::Op& op : laue.sym_ops) {
        const Index an = imageOf(op, anIndex);
        for (size_t n = 0; n < listZone.size(); ++n) {
            const bool bBetter = place.nZone < 0 || (listZone[n].bRow && !listZone[place.nZone].bRow);
            if (bBetter && listZone[n].contains(an)) {
                place = {int(n), an};
            }
        }
    }
    return place;
}

std::vector<bool> forbiddenPattern(const ReflectionZone& zone, const gemmi::GroupOps& group)
{
    std::vector<bool> pattern;
    for (const Index& an : zone.listSmall) {
        pattern.push_back(!isCentringAbsent(group, an) && group.is_systematically_absent(an));
    }
    return pattern;
}

QString conditionText(const ReflectionZone& zone, const gemmi::GroupOps& group)
{
    const std::vector<Index>& list = zone.listSmall;
    const std::vector<bool> pattern = forbiddenPattern(zone, group);
    const auto says = [&](const Form& one, const Form& other, int nModulus) {
        for (size_t n = 0; n < list.size(); ++n) {
            const bool bAllowed = isMultiple(one, list[n], nModulus) && isMultiple(other, list[n], nModulus);
            if (!isCentringAbsent(group, list[n]) && bAllowed == bool(pattern[n])) {
                return false;
            }
        }
        return true;
    };
    for (const int nModulus : {2, 3, 4, 6}) {
        for (const Form& form : g_aForm) {
            if (says(form, form, nModulus)) {
                return QStringLiteral("%1: %2 = %3n")
                    .arg(zone.strName, QLatin1String(form.pszText))
                    .arg(nModulus);
            }
        }
    }
    for (size_t nOne = 0; nOne < 3; ++nOne) {
        for (size_t nOther = nOne + 1; nOther < 3; ++nOther) {
            if (says(g_aForm[nOne], g_aForm[nOther], 2)) {
                return QStringLiteral("%1: %2, %3 = 2n")
                    .arg(zone.strName, QLatin1String(g_aForm[nOne].pszText),
                         QLatin1String(g_aForm[nOther].pszText));
            }
        }
    }
    return zone.strName;
}

}  // namespace tessera
