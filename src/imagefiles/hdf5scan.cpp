#include "imagefiles/hdf5scan.h"

#include "imagefiles/hdf5finding.h"
#include "imagefiles/hdf5nexus.h"
#include "records/pi.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace tessera {

namespace {

constexpr uint64_t g_nMostAngles = 1 << 22;  ///< angles in memory at the same time

/// A step of a chain of transformations.
struct Step {
    QByteArray strPath;
    bool bRotation = false;
    NexusVector vector = {0, 0, 0};
    std::vector<double> vecAngle;  ///< angles of a rotation, degrees
    QByteArray strNext;            ///< path of the step that it depends on; empty at the end
};

double dot(const NexusVector& a, const NexusVector& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

NexusVector cross(const NexusVector& a, const NexusVector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The vector scaled to length 1; zeros for a vector without a direction.
NexusVector unit(const NexusVector& v)
{
    const double dfLength = std::sqrt(dot(v, v));
    return dfLength > 0 && std::isfinite(dfLength)
               ? NexusVector{v[0] / dfLength, v[1] / dfLength, v[2] / dfLength}
               : NexusVector{0, 0, 0};
}

/// Rotates a vector right-handed about an axis of length 1. Source: Rodrigues (1840), J. Math. Pures Appl.
/// 5, 380–440.
NexusVector turned(const NexusVector& v, const NexusVector& axis, double dfDegrees)
{
    const double c = std::cos(dfDegrees * g_dfPi / 180), s = std::sin(dfDegrees * g_dfPi / 180);
    const NexusVector across = cross(axis, v);
    const double along = dot(axis, v) * (1 - c);
    return {v[0] * c + across[0] * s + axis[0] * along, v[1] * c + across[1] * s + axis[1] * along,
            v[2] * c + across[2] * s + axis[2] * along};
}

/// The path that a step depends on: from the root, or relative to the group of the step.
QByteArray pathFrom(const QByteArray& strPath, const QByteArray& strTo)
{
    if (strTo.isEmpty() || strTo == ".") {
        return {};
    }
    return strTo.startsWith('/') ? strTo : strPath.left(strPath.lastIndexOf('/') + 1) + strTo;
}

/// The steps of the transformations of a file. Each data set is read once, whatever paths and links lead to
/// it, since a chain may return to itself by ever longer paths.
class CSteps {
public:
    CSteps(hid_t idFile, const QString& strFile) : m_idFile(idFile), m_strFile(strFile) {}

    /// Adds a step.
    /// @return false when its data set was read before, or when there are too many steps
    bool add(const QByteArray& strPath)
    {
        constexpr size_t nMostSteps = 32;
        constexpr int nLongestPath = 4096;
        const CHdf5Id idSet = strPath.size() <= nLongestPath ? openDataSet(m_idFile, strPath) : CHdf5Id();
        H5O_info_t info;
        if (m_vecStep.size() >= nMostSteps ||
            (idSet.isOpen() &&
             (H5Oget_info2(idSet, &info, H5O_INFO_BASIC) < 0 || !m_setTaken.insert(info.addr).second))) {
            return false;
        }
        Step step;
        step.strPath = strPath;
        if (idSet.isOpen()) {
            read(idSet, step);
        }
        m_vecStep.push_back(std::move(step));
        return true;
    }

    std::vector<Step>& steps() { return m_vecStep; }

private:
    void read(hid_t idSet, Step& step)
    {
        const std::vector<double> vecVector = numberAttribute(idSet, "vector");
        if (vecVector.size() == 3) {
            step.vector = unit({vecVector[0], vecVector[1], vecVector[2]});
        }
        step.bRotation = textAttribute(idSet, "transformation_type") == QLatin1String("rotation");
        step.strNext = pathFrom(step.strPath, textAttribute(idSet, "depends_on").toUtf8());
        // An axis at rest has one angle, for which there is always room.
        const uint64_t nRoom = m_nAngles < g_nMostAngles ? g_nMostAngles - m_nAngles : 1;
        step.vecAngle = numbersIn(m_idFile, step.strPath, m_strFile, nRoom);
        m_nAngles += step.vecAngle.size();
        const double dfUnit = unitFactor(textAttribute(idSet, "units"));
        for (double& df : step.vecAngle) {
            df *= dfUnit;
        }
        const bool bFinite = std::all_of(step.vecAngle.begin(), step.vecAngle.end(),
                                         [](double df) { return std::isfinite(df); });
        if (!bFinite) {
            step.vecAngle.clear();
        }
    }

    hid_t m_idFile;
    const QString& m_strFile;
    std::vector<Step> m_vecStep;
    std::set<haddr_t> m_setTaken;
    uint64_t m_nAngles = 0;
};

/// The steps to the end of a chain, or to the place where it returns to itself.
std::vector<Step> chainFrom(hid_t idFile, const QString& strFile, QByteArray strPath)
{
    CSteps steps(idFile, strFile);
    while (!strPath.isEmpty() && steps.add(strPath)) {
        strPath = steps.steps().back().strNext;
    }
    return std::move(steps.steps());
}

/// A direction in the laboratory, after all rotations that it depends on.
NexusVector inLaboratory(NexusVector v, const std::vector<Step>& vecStep, size_t nFrom)
{
    for (size_t i = nFrom; i < vecStep.size(); ++i) {
        if (vecStep[i].bRotation && vecStep[i].vecAngle.size() == 1) {
            v = turned(v, vecStep[i].vector, vecStep[i].vecAngle[0]);
        }
    }
    return v;
}

bool varies(const Step& step)
{
    constexpr double dfLeast = 1e-6;  // degrees
    const auto range = std::minmax_element(step.vecAngle.begin(), step.vecAngle.end());
    return !step.vecAngle.empty() && *range.second - *range.first > dfLeast;
}

QString lastName(const QByteArray& strPath)
{
    return QString::fromUtf8(strPath.mid(strPath.lastIndexOf('/') + 1));
}

/// The angle from image to image that the file gives beside an axis, with its key; 0 where there is none.
ToldNumber widthBeside(hid_t idFile, const QString& strFile, const Step& step)
{
    for (const char* pszEnd : {"_range_average", "_increment_set"}) {
        const std::vector<double> vecWidth = numbersIn(idFile, step.strPath + pszEnd, strFile, 1);
        if (vecWidth.size() == 1 && std::isfinite(vecWidth[0]) && vecWidth[0] != 0) {
            return {vecWidth[0], lastName(step.strPath + pszEnd)};
        }
    }
    const std::vector<double> vecEnd = numbersIn(idFile, step.strPath + "_end", strFile, g_nMostAngles);
    if (step.vecAngle.size() > 1) {
        return {step.vecAngle[1] - step.vecAngle[0], QStringLiteral("its way to the next")};
    }
    const double dfWidth = vecEnd.empty() || step.vecAngle.empty() ? 0 : vecEnd[0] - step.vecAngle[0];
    return {std::isfinite(dfWidth) ? dfWidth : 0, lastName(step.strPath + "_end")};
}

/// The steps that the sample depends on; if unknown, its axes by their usual names.
std::vector<Step> sampleSteps(hid_t idFile, const QString& strFile, const QByteArray& strSample)
{
    const QByteArray strFirst = textIn(idFile, strSample + "/depends_on").toUtf8();
    std::vector<Step> vecStep = chainFrom(idFile, strFile, pathFrom(strSample + "/depends_on", strFirst));
    if (!vecStep.empty()) {
        return vecStep;
    }
    CSteps steps(idFile, strFile);
    for (const char* pszGroup : {"/goniometer/", "/transformations/"}) {
        for (const char* pszName : {"omega", "alpha", "phi", "kappa", "chi"}) {
            const QByteArray strPath = strSample + pszGroup + pszName;
            if (openDataSet(idFile, strPath).isOpen() && steps.add(strPath)) {
                steps.steps().back().strNext.clear();
            }
        }
    }
    return std::move(steps.steps());
}

void takeAngles(const Step& step, const ToldNumber& width, Hdf5Series& series)
{
    const double dfWidth = width.df;
    const size_t nImages = size_t(series.header.nImages);
    if (nImages > g_nMostAngles) {
        series.header.listDoubt.append(
            QStringLiteral("The tilts were not used, as the file has %1 images but only %2 tilts.")
                .arg(nImages)
                .arg(g_nMostAngles));
        return;
    }
    series.strTiltSource = lastName(step.strPath);
    series.strWidthSource = width.strSource;
    series.dfWidth = dfWidth;
    if (step.vecAngle.size() >= nImages && nImages > 1) {
        series.vecStart.assign(step.vecAngle.begin(), step.vecAngle.begin() + std::ptrdiff_t(nImages));
    } else if (dfWidth != 0) {
        for (size_t i = 0; i < nImages; ++i) {
            series.vecStart.push_back(i < step.vecAngle.size() ? step.vecAngle[i]
                                                               : step.vecAngle[0] + double(i) * dfWidth);
        }
    }
}

void takeAxis(hid_t idFile, const QString& strFile, const QByteArray& strDetector, const NexusVector& axis,
              bool bElectrons, FrameHeader& header)
{
    const QByteArray strModule = strDetector + "/module";
    const auto direction = [&](const char* pszName) {
        const std::vector<Step> vecStep = chainFrom(idFile, strFile, strModule + pszName);
        return vecStep.empty() ? NexusVector{0, 0, 0} : inLaboratory(vecStep[0].vector, vecStep, 1);
    };
    QString strReason;
    constexpr double dfAlong = 1 - 1e-9;
    if (!bElectrons && std::fabs(axis[0]) > dfAlong) {
        strReason = QStringLiteral("it is the default of the detector");
    } else if (const auto dfDegrees = axisOnImage(axis, direction("/fast_pixel_direction"),
                                                  direction("/slow_pixel_direction"), strReason)) {
        header.rotationAxis = {*dfDegrees, QStringLiteral("vector of the scan's axis")};
        return;
    }
    header.listDoubt.append(QStringLiteral("The file's axis of rotation was not taken: %1.").arg(strReason));
}

}  // namespace

std::optional<double> axisOnImage(const NexusVector& axis, const NexusVector& fast, const NexusVector& slow,
                                  QString& strReason)
{
    constexpr double dfSquare = 0.02, dfAcross = 0.95, dfInPlane = 0.3;
    const NexusVector normal = cross(slow, fast);  // out of the image, towards the viewer
    const auto isUnit = [](const NexusVector& v) { return std::fabs(dot(v, v) - 1) < dfSquare; };
    if (!isUnit(axis) || !isUnit(fast) || !isUnit(slow) || std::fabs(dot(fast, slow)) > dfSquare) {
        strReason = QStringLiteral("the directions of axis, rows and columns are not given");
    } else if (-normal[2] < dfAcross) {  // towards the source
        strReason = QStringLiteral("the detector is not across the beam, or is seen from behind");
    } else if (std::fabs(dot(axis, normal)) > dfInPlane) {
        strReason = QStringLiteral("it does not lie in the plane of the detector");
    } else {
        return std::atan2(-dot(axis, slow), dot(axis, fast)) * 180 / g_dfPi;
    }
    return std::nullopt;
}

void readScan(hid_t idFile, const QString& strPath, const QByteArray& strEntry, const QByteArray& strDetector,
              bool bElectrons, Hdf5Series& series)
{
    const std::vector<Step> vecStep = sampleSteps(idFile, strPath, strEntry + "/sample");
    for (size_t i = 0; i < vecStep.size(); ++i) {
        const Step& step = vecStep[i];
        const ToldNumber width = widthBeside(idFile, strPath, step);
        if (step.vecAngle.empty() || (!varies(step) && width.df == 0)) {
            continue;
        }
        takeAngles(step, width, series);
        const NexusVector noAxis = {0, 0, 0};
        if (step.vector != noAxis) {
            const size_t nEnd = step.strNext.isEmpty() ? vecStep.size() : i + 1;
            takeAxis(idFile, strPath, strDetector, inLaboratory(step.vector, vecStep, nEnd), bElectrons,
                     series.header);
        }
        return;
    }
}

}  // namespace tessera
