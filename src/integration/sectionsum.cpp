#include "integration/sectionsum.h"

#include "frames/badpixels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

namespace {

// Side of a block of pixels that are tested together; about the root of the side of a frame.
const int g_nBlock = 16;

using Matrix = std::array<double, 9>;

Matrix product(const Matrix& a, const Matrix& b)
{
    Matrix result;
    for (size_t nRow = 0; nRow < 3; ++nRow) {
        for (size_t n = 0; n < 3; ++n) {
            result[3 * nRow + n] = a[3 * nRow] * b[n] + a[3 * nRow + 1] * b[3 + n] +
                                   a[3 * nRow + 2] * b[6 + n];
        }
    }
    return result;
}

Matrix transposed(const Matrix& a)
{
    return {a[0], a[3], a[6], a[1], a[4], a[7], a[2], a[5], a[8]};
}

double row(const Matrix& mat, size_t nRow, const DoubleVector& v)
{
    return mat[3 * nRow] * v[0] + mat[3 * nRow + 1] * v[1] + mat[3 * nRow + 2] * v[2];
}

/// The operation on points that corresponds to an operation on indices.
Matrix operationOnPoints(const IndexOperation& operation, const SectionBasis& basis)
{
    const DoubleVector aCross[] = {cross(basis[1], basis[2]), cross(basis[2], basis[0]),
                                   cross(basis[0], basis[1])};
    const double dfVolume = dot(basis[0], aCross[0]);
    Matrix columns, inverse, whole;
    for (size_t n = 0; n < 3; ++n) {
        for (size_t i = 0; i < 3; ++i) {
            columns[3 * i + n] = basis[n][i];
            inverse[3 * n + i] = aCross[n][i] / dfVolume;
            whole[3 * n + i] = operation[3 * n + i];
        }
    }
    return product(columns, product(whole, inverse));
}

double distance(const DoubleVector& a, const DoubleVector& b)
{
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

/// A block of pixels of a frame, with its position on the Ewald sphere.
struct Block {
    int nLeft, nRight, nTop, nBottom;  ///< right and bottom are exclusive
    DoubleVector vecMiddle;
    double dfRadius;  ///< radius about the middle, Å⁻¹
};

DoubleVector onSphere(const SeriesGeometry& series, const FramePlace& beam, double dfX, double dfY)
{
    return spherePoint(series.geometry.plane, series.geometry, {dfX - beam.dfX, dfY - beam.dfY});
}

Block blockAt(const SeriesGeometry& series, const FramePlace& beam, int nX, int nY)
{
    Block block = {nX, std::min(nX + g_nBlock, series.sizeFrame.width()),
                   nY, std::min(nY + g_nBlock, series.sizeFrame.height()),
                   {}, 0};
    const double dfRight = block.nRight - 1, dfBottom = block.nBottom - 1;
    block.vecMiddle = onSphere(series, beam, (nX + dfRight) / 2, (nY + dfBottom) / 2);
    for (const double dfX : {double(nX), dfRight}) {
        for (const double dfY : {double(nY), dfBottom}) {
            block.dfRadius = std::max(block.dfRadius,
                                      distance(block.vecMiddle, onSphere(series, beam, dfX, dfY)));
        }
    }
    block.dfRadius *= 1.1;  // distortions are linear over 16 pixels to much better than this
    return block;
}

}  // namespace

CSectionSum::CSectionSum(const SeriesGeometry& series, const ReciprocalSection& section,
                         const std::vector<IndexOperation>& listOperation, double dfTurn)
    : m_series(series),
      m_nSide(section.nSide),
      m_dfStep(section.dfStep),
      m_dfHeight(section.frame.dfHeight),
      m_dfHalfSlab(section.dfThickness / 2),
      m_dfHalfTurn(radians(dfTurn) / 2)
{
    const SectionFrame& frame = section.frame;
    const Matrix plane = {frame.vecRight[0],  frame.vecRight[1],  frame.vecRight[2],
                          frame.vecUp[0],     frame.vecUp[1],     frame.vecUp[2],
                          frame.vecNormal[0], frame.vecNormal[1], frame.vecNormal[2]};
    for (const IndexOperation& operation : listOperation) {
        m_listPlane.push_back(product(plane, operationOnPoints(operation, section.basis)));
    }
    if (listOperation.empty()) {
        m_listPlane.push_back(plane);
    }
}

std::vector<CSectionSum::Form> CSectionSum::formsOf(int nFrame) const
{
    const DiffractionGeometry& geometry = m_series.geometry;
    const Matrix back = transposed(
        turnToLaboratory(geometry.turn, geometry.dfMiddleTilt, m_series.listTilt[nFrame]));
    const double dfX = std::cos(radians(geometry.turn.outOfPlane));
    const double dfZ = std::sin(radians(geometry.turn.outOfPlane));
    // As the crystal rotates, the point that a pixel records moves backwards through the crystal: axis ×
    // point.
    const Matrix against = {0, -dfZ, 0, dfZ, 0, -dfX, 0, dfX, 0};
    std::vector<Form> listForm;
    for (const Matrix& plane : m_listPlane) {
        listForm.push_back({product(plane, back), product(plane, product(against, back))});
    }
    return listForm;
}

bool CSectionSum::reaches(const Form& form, const DoubleVector& vecMiddle, double dfRadius) const
{
    const double dfAbove = std::fabs(row(form.aPlace, 2, vecMiddle) - m_dfHeight);
    const double dfChange = std::fabs(row(form.aChange, 2, vecMiddle)) + dfRadius;
    return dfAbove <= m_dfHalfSlab + dfRadius + dfChange * m_dfHalfTurn;
}

void CSectionSum::layPoint(double dfRight, double dfUp, float fValue, float fWeight, SectionPart& part) const
{
    const int nCentre = (m_nSide - 1) / 2;  // the side is odd
    const double dfCentre = nCentre;
    const double dfColumn = dfCentre + dfRight / m_dfStep, dfRow = dfCentre - dfUp / m_dfStep;
    if (!(dfColumn >= 0 && dfColumn < m_nSide - 1 && dfRow >= 0 && dfRow < m_nSide - 1)) {
        return;
    }
    const auto nColumn = size_t(dfColumn), nRow = size_t(dfRow);
    const auto fX = float(dfColumn - double(nColumn)), fY = float(dfRow - double(nRow));
    const float afWeight[] = {(1 - fX) * (1 - fY) * fWeight, fX * (1 - fY) * fWeight, (1 - fX) * fY * fWeight,
                              fX * fY * fWeight};
    const size_t nFirst = nRow * size_t(m_nSide) + nColumn;
    const size_t anPlace[] = {nFirst, nFirst + 1, nFirst + size_t(m_nSide), nFirst + size_t(m_nSide) + 1};
    for (size_t n = 0; n < 4; ++n) {
        part.listWeight[anPlace[n]] += afWeight[n];
        part.listSum[anPlace[n]] += afWeight[n] * fValue;
    }
}

void CSectionSum::layPixel(const Form& form, const DoubleVector& vecSphere, float fValue,
                           SectionPart& part) const
{
    const double dfAbove = row(form.aPlace, 2, vecSphere) - m_dfHeight;
    const double dfChange = row(form.aChange, 2, vecSphere);
    double dfFrom = -m_dfHalfTurn, dfTo = m_dfHalfTurn;
    if (std::fabs(dfChange) * m_dfHalfTurn > 1e-9 * m_dfHalfSlab) {  // it moves through the slab
        const double dfEnter = (-m_dfHalfSlab - dfAbove) / dfChange;
        const double dfLeave = (m_dfHalfSlab - dfAbove) / dfChange;
        dfFrom = std::max(dfFrom, std::min(dfEnter, dfLeave));
        dfTo = std::min(dfTo, std::max(dfEnter, dfLeave));
        if (!(dfFrom < dfTo)) {
            return;
        }
    } else if (!(std::fabs(dfAbove) <= m_dfHalfSlab)) {
        return;
    }
    if (part.listSum.empty()) {
        part.listSum.resize(size_t(m_nSide) * size_t(m_nSide));
        part.listWeight.resize(part.listSum.size());
    }
    const double dfRight = row(form.aPlace, 0, vecSphere), dfUp = row(form.aPlace, 1, vecSphere);
    const double dfRightChange = row(form.aChange, 0, vecSphere);
    const double dfUpChange = row(form.aChange, 1, vecSphere);
    const double dfTurn = dfTo - dfFrom;
    const int nPoints = 1 + int(std::hypot(dfRightChange, dfUpChange) * dfTurn / m_dfStep);
    const double dfShare = m_dfHalfTurn > 0 ? dfTurn / (2 * m_dfHalfTurn) : 1;
    for (int n = 0; n < nPoints; ++n) {
        const double dfAngle = dfFrom + (n + 0.5) / nPoints * dfTurn;
        layPoint(dfRight + dfAngle * dfRightChange, dfUp + dfAngle * dfUpChange, fValue,
                 float(dfShare / nPoints), part);
    }
}

SectionPart CSectionSum::layFrame(const CImgObj<float>& image, int nFrame,
                                  const std::vector<char>& listMasked) const
{
    SectionPart part;
    const std::vector<Form> listForm = formsOf(nFrame);
    const FramePlace& beam = m_series.listBeam[nFrame];
    const int nWidth = m_series.sizeFrame.width(), nHeight = m_series.sizeFrame.height();
    std::vector<const Form*> listNear;
    for (int nY = 0; nY < nHeight; nY += g_nBlock) {
        for (int nX = 0; nX < nWidth; nX += g_nBlock) {
            const Block block = blockAt(m_series, beam, nX, nY);
            listNear.clear();
            for (const Form& form : listForm) {
                if (reaches(form, block.vecMiddle, block.dfRadius)) {
                    listNear.push_back(&form);
                }
            }
            for (int y = block.nTop; y < block.nBottom && !listNear.empty(); ++y) {
                for (int x = block.nLeft; x < block.nRight; ++x) {
                    const size_t nPixel = size_t(y) * size_t(nWidth) + size_t(x);
                    const float fValue = image.Data()[nPixel];
                    if (listMasked[nPixel] || !isUsablePixel(fValue)) {
                        continue;
                    }
                    const DoubleVector vecSphere = onSphere(m_series, beam, x, y);
                    for (const Form* pForm : listNear) {
                        layPixel(*pForm, vecSphere, fValue, part);
                    }
                }
            }
        }
    }
    return part;
}

}  // namespace tessera
