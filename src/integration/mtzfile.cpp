// The only source that includes gemmi's writer. gemmi's own printf is a library that not every system has;
// the printf of the system depends on the locale, which LocaleOfFiles sets.
#define GEMMI_WRITE_IMPLEMENTATION
#define USE_STD_SNPRINTF
#include "integration/mtzfile.h"

#include "records/sealedfile.h"

#include <gemmi/mtz.hpp>

#include <locale.h>
#include <algorithm>

namespace tessera {

namespace {

/// Sets the C locale for this thread until the end of the scope.
class LocaleOfFiles {
public:
    LocaleOfFiles() : m_locale(newlocale(LC_ALL_MASK, "C", nullptr)), m_former(uselocale(m_locale)) {}
    ~LocaleOfFiles()
    {
        uselocale(m_former);
        if (m_locale) {
            freelocale(m_locale);
        }
    }
    LocaleOfFiles(const LocaleOfFiles&) = delete;
    LocaleOfFiles& operator=(const LocaleOfFiles&) = delete;

private:
    locale_t m_locale;
    locale_t m_former;
};

gemmi::Mtz::Column column(const char* pszLabel, char chType)
{
    gemmi::Mtz::Column made;
    made.dataset_id = chType == 'H' ? 0 : 1;
    made.type = chType;
    made.label = pszLabel;
    return made;
}

gemmi::Mtz::Dataset dataset(int nId, const std::string& strName, const gemmi::UnitCell& cell,
                            double dfWavelength)
{
    const std::string strShown = nId == 0 ? "HKL_base" : strName;
    return {nId, strShown, strShown, strShown, cell, dfWavelength};
}

/// A name for the header, in ASCII and short enough for a line.
std::string shortName(const QString& strName)
{
    std::string str;
    for (const QChar ch : strName.left(40)) {
        str += ch > QLatin1Char(' ') && ch < QLatin1Char('\x7f') ? ch.toLatin1() : '_';
    }
    return str.empty() ? "series" : str;
}

}  // namespace

QByteArray mtzBytes(const StructureData& data, double dfScale)
{
    if (data.listMerged.empty()) {
        return {};
    }
    gemmi::Mtz mtz;
    const CellParameters& c = data.cell;
    mtz.cell.set(c.a, c.b, c.c, c.alpha, c.beta, c.gamma);
    mtz.spacegroup = data.pSpaceGroup;
    mtz.title = "Tessera " TESSERA_VERSION " " + sealPlace().toStdString();
    const std::string strName = shortName(data.strName);
    mtz.datasets = {dataset(0, strName, mtz.cell, 0), dataset(1, strName, mtz.cell, data.dfWavelength)};
    mtz.columns = {column("H", 'H'), column("K", 'H'), column("L", 'H'), column("IMEAN", 'J'),
                   column("SIGIMEAN", 'Q')};
    for (size_t n = 0; n < mtz.columns.size(); ++n) {
        mtz.columns[n].parent = &mtz;
        mtz.columns[n].idx = n;
    }
    std::vector<ScaledIntensity> listMerged = data.listMerged;
    gemmi::UnmergedHklMover mover(mtz.spacegroup);
    for (ScaledIntensity& one : listMerged) {
        mover.move_to_asu(one.anIndex);
    }
    std::stable_sort(
        listMerged.begin(), listMerged.end(),
        [](const ScaledIntensity& a, const ScaledIntensity& b) { return a.anIndex < b.anIndex; });
    for (const ScaledIntensity& one : listMerged) {
        for (const int nIndex : one.anIndex) {
            mtz.data.push_back(float(nIndex));
        }
        mtz.data.push_back(float(one.dfIntensity * dfScale));
        mtz.data.push_back(float(one.dfSigma * dfScale));
    }
    mtz.nreflections = int(listMerged.size());
    mtz.sort_order = {{1, 2, 3, 0, 0}};
    std::string strBytes;
    const LocaleOfFiles locale;
    mtz.write_to_string(strBytes);
    return sealed(QByteArray::fromStdString(strBytes));
}

}  // namespace tessera
