#include "workstate/windowfile.h"

#include "dataset/pagerounding.h"
#include "records/reason.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <tuple>

namespace tessera {

namespace {

const char g_szFormat[] = "format", g_szName[] = "Tessera window", g_szVersion[] = "version";
constexpr int g_nVersion = 1;

struct NumberKey {
    const char* pszKey;
    ParameterMember member;
};

using Hunt = PeakHuntingParameters;
using Merge = PeakMergingParameters;

const NumberKey g_aHuntingKey[] = {{"peak-radius", &Hunt::m_dfPeakRadius},
                                   {"background-radius", &Hunt::m_dfBackgroundRadius},
                                   {"peak-threshold", &Hunt::m_dfPeakThreshold},
                                   {"smooth-radius", &Hunt::m_dfSmoothRadius},
                                   {"integration-radius", &Hunt::m_dfIntegrationRadius},
                                   {"integration-background", &Hunt::m_dfIntegrationBackground}};
const NumberKey g_aPageKey[] = {{"resolution-min", &MappingParameters::m_dfResolutionMin},
                                {"resolution-max", &MappingParameters::m_dfResolutionMax},
                                {"intensity-min", &MappingParameters::m_dfIntensityMin},
                                {"intensity-max", &MappingParameters::m_dfIntensityMax},
                                {"min-3d-distance", &Merge::m_dfMin3DDistance},
                                {"max-2d-distance", &Merge::m_dfMax2DDistance},
                                {"min-2d-length", &Merge::m_dfMin2DLength},
                                {"max-3d-length", &Merge::m_dfMax3DLength},
                                {"cell-min", &CellHuntingParameters::m_dfCellRangeMin},
                                {"cell-max", &CellHuntingParameters::m_dfCellRangeMax},
                                {"index-threshold", &IndexingParameters::m_dfIndexThreshold},
                                {"space-group", &IndexingParameters::m_nSpaceGroup}};

ParameterRecords recordsOf(WindowMemory& memory)
{
    ParameterRecords records{};
    std::get<PeakHuntingParameters*>(records) = &memory.hunting;
    std::get<MappingParameters*>(records) = &memory.mapping;
    std::get<PeakMergingParameters*>(records) = &memory.merging;
    std::get<CellHuntingParameters*>(records) = &memory.cell;
    std::get<IndexingParameters*>(records) = &memory.indexing;
    return records;
}

ParameterRecords recordsOf(PeakHuntingParameters& hunting)
{
    ParameterRecords records{};
    std::get<PeakHuntingParameters*>(records) = &hunting;
    return records;
}

/// Reads and writes members of a JSON object by their keys, and keeps the first error.
class CMembers {
public:
    CMembers(const QJsonObject& object, QString& strWrong) : m_object(object), m_strWrong(strWrong) {}

    template <size_t N>
    void read(const NumberKey (&aKey)[N], const ParameterRecords& records)
    {
        for (const NumberKey& key : aKey) {
            const Parameter& row = parameterOf(key.member);
            double df = row.value(records);
            read(key.pszKey, row.box.dfMinimum, row.box.dfMaximum, df);
            row.setValue(records, spinBoxValue(df, row.box));
        }
    }
    void read(const char* pszKey, bool& bValue)
    {
        const QJsonValue value = m_object.value(QLatin1String(pszKey));
        if (!value.isUndefined() && !value.isBool()) {
            complain(pszKey);
        }
        bValue = value.toBool(bValue);
    }
    void read(const char* pszKey, int nMinimum, int nMaximum, int& nValue)
    {
        double df = nValue;
        read(pszKey, nMinimum, nMaximum, df);
        if (df != std::floor(df)) {
            complain(pszKey);
        }
        nValue = int(df);
    }
    void read(const char* pszKey, quint64& nPrint)
    {
        bool bOk = false;
        nPrint = m_object.value(QLatin1String(pszKey)).toString().toULongLong(&bOk, 16);
        if (!bOk) {
            complain(pszKey);
        }
    }

private:
    void read(const char* pszKey, double dfMinimum, double dfMaximum, double& dfValue)
    {
        const QJsonValue value = m_object.value(QLatin1String(pszKey));
        if (value.isUndefined()) {
            return;
        }
        const double df = value.toDouble(std::nan(""));
        if (!(df >= dfMinimum && df <= dfMaximum)) {
            complain(pszKey);
            return;
        }
        dfValue = df;
    }
    void complain(const char* pszKey)
    {
        if (m_strWrong.isEmpty()) {
            m_strWrong = QStringLiteral("\"%1\" has an impossible value").arg(QLatin1String(pszKey));
        }
    }

    const QJsonObject& m_object;
    QString& m_strWrong;
};

template <size_t N>
void write(const NumberKey (&aKey)[N], const ParameterRecords& records, QJsonObject& object)
{
    for (const NumberKey& key : aKey) {
        const Parameter& row = parameterOf(key.member);
        object.insert(QLatin1String(key.pszKey), spinBoxValue(row.value(records), row.box));
    }
}

QString printText(quint64 nPrint)
{
    return QString::number(nPrint, 16);
}

QJsonObject pagesOf(WindowMemory memory)
{
    QJsonObject pages;
    write(g_aHuntingKey, recordsOf(memory), pages);
    write(g_aPageKey, recordsOf(memory), pages);
    pages.insert(QStringLiteral("auto-radii"), memory.hunting.m_bAutoRadii);
    pages.insert(QStringLiteral("integrate-2d"), memory.merging.m_bIntegrate2D);
    pages.insert(QStringLiteral("integrate-through-frames"), memory.merging.m_bIntegrateThroughFrames);
    pages.insert(QStringLiteral("cell-method"), int(memory.cell.m_method));
    pages.insert(QStringLiteral("cell-auto"), memory.cell.m_bAutoRange);
    return pages;
}

void readPages(const QJsonObject& pages, WindowMemory& memory, QString& strWrong)
{
    CMembers members(pages, strWrong);
    members.read(g_aHuntingKey, recordsOf(memory));
    members.read(g_aPageKey, recordsOf(memory));
    members.read("auto-radii", memory.hunting.m_bAutoRadii);
    members.read("integrate-2d", memory.merging.m_bIntegrate2D);
    members.read("integrate-through-frames", memory.merging.m_bIntegrateThroughFrames);
    int nMethod = int(memory.cell.m_method);
    members.read("cell-method", int(CellSearchMethod::DifferenceVectors), int(CellSearchMethod::BestOfBoth),
                 nMethod);
    memory.cell.m_method = CellSearchMethod(nMethod);
    members.read("cell-auto", memory.cell.m_bAutoRange);
}

void readRecords(const QJsonObject& object, WindowMemory& memory, QString& strWrong)
{
    memory.hunted.reset();
    memory.merged.reset();
    if (const QJsonValue value = object.value(QStringLiteral("hunted")); value.isObject()) {
        const QJsonObject hunted = value.toObject();
        CMembers members(hunted, strWrong);
        HuntedMemory& record = memory.hunted.emplace();
        members.read(g_aHuntingKey, recordsOf(record.hunting));
        members.read("peaks", record.nPeaks);
    }
    if (const QJsonValue value = object.value(QStringLiteral("merged")); value.isObject()) {
        const QJsonObject merged = value.toObject();
        CMembers members(merged, strWrong);
        MergedMemory& record = memory.merged.emplace();
        members.read("group", -1, 63, record.nGroup);
        members.read("peaks", record.nPeaks);
        members.read("reflections", record.nMerged);
    }
}

}  // namespace

QByteArray windowFileText(const WindowMemory& memory)
{
    QJsonObject object;
    object.insert(QLatin1String(g_szFormat), QLatin1String(g_szName));
    object.insert(QLatin1String(g_szVersion), g_nVersion);
    object.insert(QStringLiteral("pages"), pagesOf(memory));
    if (memory.hunted) {
        QJsonObject hunted;
        PeakHuntingParameters hunting = memory.hunted->hunting;
        write(g_aHuntingKey, recordsOf(hunting), hunted);
        hunted.insert(QStringLiteral("peaks"), printText(memory.hunted->nPeaks));
        object.insert(QStringLiteral("hunted"), hunted);
    }
    if (memory.merged) {
        object.insert(QStringLiteral("merged"),
                      QJsonObject{{QStringLiteral("group"), memory.merged->nGroup},
                                  {QStringLiteral("peaks"), printText(memory.merged->nPeaks)},
                                  {QStringLiteral("reflections"), printText(memory.merged->nMerged)}});
    }
    return QJsonDocument(object).toJson();
}

bool readWindowFileText(const QByteArray& bytes, WindowMemory& memory, QString* pstrReason)
{
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(bytes, &error).object();
    if (error.error != QJsonParseError::NoError) {
        giveReason(pstrReason, error.errorString());
        return false;
    }
    if (object.value(QLatin1String(g_szFormat)).toString() != QLatin1String(g_szName) ||
        object.value(QLatin1String(g_szVersion)).toInt() != g_nVersion) {
        giveReason(pstrReason, QStringLiteral("it is of another kind or version"));
        return false;
    }
    WindowMemory read = memory;
    QString strWrong;
    readPages(object.value(QStringLiteral("pages")).toObject(), read, strWrong);
    readRecords(object, read, strWrong);
    if (!strWrong.isEmpty()) {
        giveReason(pstrReason, strWrong);
        return false;
    }
    memory = read;
    return true;
}

}  // namespace tessera
