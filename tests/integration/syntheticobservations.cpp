#include "tests/integration/syntheticobservations.h"

#include <cmath>
#include <random>

namespace tessera {

namespace {

const double g_dfWavelength = 0.0251;

Eigen::Matrix3d eigenOf(const Matrix3& mat)
{
    Eigen::Matrix3d m;
    m << mat[0][0], mat[0][1], mat[0][2], mat[1][0], mat[1][1], mat[1][2], mat[2][0], mat[2][1], mat[2][2];
    return m;
}

std::vector<CrystalStructure> furtherStructures()
{
    const auto text = [](const char* psz) { return QString::fromLatin1(psz); };
    return {
        {text("pyrite"),
         text("P a -3"),
         205,
         {},
         {5.418, 5.418, 5.418, 90, 90, 90},
         {text("-x,-y,-z"), text("y,z,x"), text("-x+1/2,-y,z+1/2")},
         {{text("Ti"), 0, 0, 0}, {text("Cl"), 0.3848, 0.3848, 0.3848}}},
        {text("scheelite"),
         text("I 41/a"),
         88,
         {},
         {5.243, 5.243, 11.376, 90, 90, 90},
         {text("-x,-y,-z"), text("-y+3/4,x+1/4,z+1/4"), text("x+1/2,y+1/2,z+1/2")},
         {{text("Ca"), 0, 0.25, 0.625}, {text("Ti"), 0, 0.25, 0.125}, {text("O"), 0.1507, 0.0086, 0.2106}}},
        {text("apatite"),
         text("P 63/m"),
         176,
         {},
         {9.424, 9.424, 6.879, 90, 90, 120},
         {text("-x,-y,-z"), text("x-y,x,z+1/2")},
         {{text("Ca"), 1.0 / 3, 2.0 / 3, 0.0015},
          {text("Ca"), 0.2468, -0.0075, 0.25},
          {text("Si"), 0.3982, 0.3688, 0.25},
          {text("O"), 0.3268, 0.4850, 0.25},
          {text("O"), 0.5876, 0.4651, 0.25},
          {text("O"), 0.3433, 0.2579, 0.0705}}},
        {text("dolomite"),
         text("R -3"),
         148,
         {},
         {4.8069, 4.8069, 16.0034, 90, 90, 120},
         {text("-x,-y,-z"), text("-y,x-y,z"), text("x+2/3,y+1/3,z+1/3")},
         {{text("Ca"), 0, 0, 0},
          {text("Mg"), 0, 0, 0.5},
          {text("C"), 0, 0, 0.24287},
          {text("O"), 0.24776, -0.03525, 0.24404}}},
        {text("antimonate"),
         text("P -3 1 m"),
         162,
         {},
         {5.298, 5.298, 5.379, 90, 90, 120},
         {text("-x,-y,-z"), text("-y,x-y,z"), text("y,x,z")},
         {{text("Ca"), 0, 0, 0}, {text("Ti"), 1.0 / 3, 2.0 / 3, 0.5}, {text("O"), 0.37, 0, 0.3}}}};
}

/// A turn that puts no axis of the crystal near the rotation axis or the beam.
Eigen::Matrix3d orientation()
{
    return (Eigen::AngleAxisd(0.7, Eigen::Vector3d::UnitX()) *
            Eigen::AngleAxisd(-0.5, Eigen::Vector3d::UnitY()) *
            Eigen::AngleAxisd(0.4, Eigen::Vector3d::UnitZ()))
        .toRotationMatrix();
}

double excitation(const DiffractionGeometry& geometry, const std::array<int, 3>& anIndex, double dfTilt)
{
    const DoubleVector v = laboratoryPoint(
        geometry, {double(anIndex[0]), double(anIndex[1]), double(anIndex[2])}, dfTilt);
    const double dfK = 1 / geometry.dfWavelength;
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + (v[2] - dfK) * (v[2] - dfK)) - dfK;
}

class CMaker {
public:
    CMaker(const CrystalStructure& structure, const SyntheticOptions& options)
        : m_factor(structure), m_options(options), m_random(options.nSeed)
    {
        putLattice();
        putSeries();
        putObservations();
    }
    SyntheticSeries m_made;

private:
    void putLattice()
    {
        const Eigen::Matrix3d reciprocal = eigenOf(m_factor.reciprocalBasis()) * orientation().transpose();
        const Eigen::Matrix3d primitive = eigenOf(m_factor.primitiveBasis()) * reciprocal;
        const LatticeBasis direct = primitive.inverse().transpose();
        const std::vector<LatticeSymmetry> listSymmetry = bestOfEachType(latticeSymmetries(direct));
        const LatticeBasis force = m_options.bPrimitive ? listSymmetry.back().basisMeasured
                                                        : LatticeBasis(reciprocal.inverse().transpose());
        for (const LatticeSymmetry& symmetry : listSymmetry) {
            const Eigen::Matrix3d mat = 6 * symmetry.basisMeasured * force.inverse();
            m_made.lattice.listType.push_back({symmetry, mat.array().round().matrix() / 6});
        }
        m_made.lattice.cell = cellOf(force);
        m_made.lattice.cellErrors = {0.001, 0.001, 0.001, 0.01, 0.01, 0.01};
        m_forceReciprocal = force.inverse().transpose();
        m_toSource = m_forceReciprocal * reciprocal.inverse();
    }

    void putSeries()
    {
        SeriesGeometry& series = m_made.series;
        for (int n = 0; n < 3; ++n) {
            for (int i = 0; i < 3; ++i) {
                series.geometry.aBasis[n][i] = m_forceReciprocal(n, i);
            }
        }
        series.geometry.dfWavelength = g_dfWavelength;
        series.geometry.dfPixelSize = 0.01;
        for (double df = m_options.dfFirstTilt; df < m_options.dfLastTilt + 1e-6; df += m_options.dfStep) {
            series.listTilt.push_back(df);
            series.listBeam.push_back({256, 256});
        }
        series.sizeFrame = QSize(512, 512);
    }

    double trueIntensity(const std::array<int, 3>& anIndex) const
    {
        const Eigen::RowVector3d h = Eigen::RowVector3d(anIndex[0], anIndex[1], anIndex[2]) * m_toSource;
        return std::norm(
            m_factor.value(int(std::lround(h[0])), int(std::lround(h[1])), int(std::lround(h[2]))));
    }

    void putObservations()
    {
        const double dfMost = 1 / m_options.dfDMin;
        std::array<int, 3> anMost = {};
        for (int n = 0; n < 3; ++n) {
            anMost[n] = int(m_made.lattice.cell.numbers()[n] * dfMost) + 1;
        }
        std::array<int, 3> an = {};
        for (an[0] = -anMost[0]; an[0] <= anMost[0]; ++an[0]) {
            for (an[1] = -anMost[1]; an[1] <= anMost[1]; ++an[1]) {
                for (an[2] = -anMost[2]; an[2] <= anMost[2]; ++an[2]) {
                    const double dfDStar =
                        (Eigen::RowVector3d(an[0], an[1], an[2]) * m_forceReciprocal).norm();
                    // What is centred in the source has no other points in its cell.
                    const Eigen::RowVector3d h =
                        Eigen::RowVector3d(an[0], an[1], an[2]) * m_forceReciprocal *
                        m_made.lattice.listType.back().symmetry.basisMeasured.transpose();
                    const bool bPoint = (h - h.array().round().matrix()).cwiseAbs().maxCoeff() < 1e-3;
                    if (bPoint && dfDStar > 0.05 && dfDStar < dfMost) {
                        follow(an, dfDStar);
                    }
                }
            }
        }
        measure();
    }

    void follow(const std::array<int, 3>& anIndex, double dfDStar)
    {
        const std::vector<double>& listTilt = m_made.series.listTilt;
        double dfBefore = excitation(m_made.series.geometry, anIndex, listTilt.front());
        for (size_t n = 1; n < listTilt.size(); ++n) {
            const double df = excitation(m_made.series.geometry, anIndex, listTilt[n]);
            const double dfSpeed = std::abs(df - dfBefore) / m_options.dfStep;
            if ((df > 0) != (dfBefore > 0) && dfSpeed > 0.001) {
                Observation observation;
                observation.anIndex = anIndex;
                observation.dfFrame = double(n) - df / (df - dfBefore);
                observation.dfTilt = listTilt.front() + observation.dfFrame * m_options.dfStep;
                observation.dfDStar = dfDStar;
                observation.dfSpeed = dfSpeed;
                observation.nFirstFrame = int(n) - 1;
                observation.nLastFrame = int(n);
                m_made.integrated.listObservation.push_back(observation);
                m_made.listTrue.push_back(trueIntensity(anIndex));
            }
            dfBefore = df;
        }
    }

    void measure()
    {
        std::vector<Observation>& list = m_made.integrated.listObservation;
        double dfMean = 0;
        for (const double df : m_made.listTrue) {
            dfMean += df / double(list.size());
        }
        std::normal_distribution<double> normal;
        std::uniform_real_distribution<double> even(0, 1);
        for (size_t n = 0; n < list.size(); ++n) {
            Observation& observation = list[n];
            double& dfTrue = m_made.listTrue[n];
            if (m_options.bForbidden && dfTrue < 1e-9 * dfMean) {
                dfTrue = -0.05 * dfMean * std::exp(-3 * observation.dfDStar * observation.dfDStar / 4) *
                         std::log(std::max(1e-9, even(m_random)));
            }
            double df = m_options.dfElectrons * dfTrue / dfMean * 0.01 / observation.dfSpeed;
            df /= m_options.fnFading ? m_options.fnFading(observation.dfFrame) : 1;
            const double dfB = m_options.fnB ? m_options.fnB(observation.dfFrame) : 0;
            df *= std::exp(-dfB * observation.dfDStar * observation.dfDStar / 2);
            observation.dfSigma = std::sqrt(df + m_options.dfBackground);
            const double dfNoise = m_options.dfA * std::hypot(observation.dfSigma, m_options.dfB * df);
            observation.dfIntensity = df + dfNoise * normal(m_random);
            if (even(m_random) < m_options.dfOutliers) {
                m_made.setOutlier.insert(int(n));
                observation.dfIntensity = even(m_random) < 0.5 ? 10 * df + 500 * dfNoise : -df;
            }
        }
        m_made.integrated.dfMaxDStar = 1 / m_options.dfDMin;
    }

    CStructureFactor m_factor;
    SyntheticOptions m_options;
    std::mt19937_64 m_random;
    Eigen::Matrix3d m_forceReciprocal;
    Eigen::Matrix3d m_toSource;  ///< indices of the cell in force, as rows, to those of the source
};

}  // namespace

SyntheticSeries syntheticSeries(const CrystalStructure& structure, const SyntheticOptions& options)
{
    return CMaker(structure, options).m_made;
}

CrystalStructure structureNamed(const QString& strName)
{
    if (const CrystalStructure* pStructure = findCrystalStructure(strName)) {
        return *pStructure;
    }
    for (const CrystalStructure& structure : furtherStructures()) {
        if (structure.strName == strName) {
            return structure;
        }
    }
    return {};
}

}  // namespace tessera
