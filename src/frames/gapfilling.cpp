#include "frames/gapfilling.h"

#include "frames/framegaps.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace tessera {

namespace {

/// The nearest usable pixel on one side of an unusable one.
struct Side {
    float fValue = 0;
    int nDistance = 0;  ///< pixels; 0: there is none on this side
};

/// The value and weight that a line through an unusable pixel gives.
struct Told {
    double dfValue, dfWeight;
};

/// The unusable pixels of a frame. As they are few, all steps except finding them take time by their number
/// only.
class CBadPixels {
public:
    explicit CBadPixels(CImgObj<float>& img) : m_img(img), m_vecRun(unusableRuns(img))
    {
        m_vecRow.reserve(size_t(img.Height()) + 1);
        m_vecStart.reserve(m_vecRun.size());
        size_t nRun = 0;
        for (int y = 0; y < img.Height(); ++y) {
            m_vecRow.push_back(nRun);
            for (; nRun < m_vecRun.size() && m_vecRun[nRun].nY == y; ++nRun) {
                m_vecStart.push_back(m_nPixels);
                m_nPixels += size_t(m_vecRun[nRun].pixelCount());
            }
        }
        m_vecRow.push_back(nRun);
    }

    size_t count() const { return m_nPixels; }

    /// Fills the pixels. A pixel without a usable pixel in its row and column is not changed.
    void fill()
    {
        const std::vector<Side> vecAbove = sides(-1), vecBelow = sides(1);
        for (size_t n = 0; n < m_vecRun.size(); ++n) {
            const PixelRun& run = m_vecRun[n];
            for (int x = run.nFirst; x <= run.nLast; ++x) {
                const size_t i = m_vecStart[n] + size_t(x - run.nFirst);
                const Side left = run.nFirst > 0 ? Side{at(run.nFirst - 1, run.nY), x - run.nFirst + 1}
                                                 : Side();
                const Side right = run.nLast + 1 < m_img.Width()
                                       ? Side{at(run.nLast + 1, run.nY), run.nLast - x + 1}
                                       : Side();
                const std::optional<Told> row = between(left, right);
                const std::optional<Told> column = between(vecAbove[i], vecBelow[i]);
                float& f = m_img.Data()[size_t(run.nY) * size_t(m_img.Width()) + size_t(x)];
                if (row && column) {
                    const double dfShare = column->dfWeight / (row->dfWeight + column->dfWeight);
                    f = float(row->dfValue + dfShare * (column->dfValue - row->dfValue));
                } else if (row || column) {
                    f = float(row ? row->dfValue : column->dfValue);
                }
            }
        }
    }

private:
    float at(int nX, int nY) const { return m_img.Data()[size_t(nY) * size_t(m_img.Width()) + size_t(nX)]; }

    static std::optional<Told> between(const Side& one, const Side& other)
    {
        const double dfOne = double(one.fValue), dfOther = double(other.fValue);
        const int nSpan = one.nDistance + other.nDistance;
        if (one.nDistance > 0 && other.nDistance > 0) {
            return Told{dfOne + (dfOther - dfOne) * one.nDistance / nSpan, 1.0 / nSpan};
        }
        if (nSpan == 0) {
            return std::nullopt;
        }
        return Told{one.nDistance > 0 ? dfOne : dfOther, 0.5 / nSpan};
    }

    /// For all unusable pixels the nearest usable one above (nStep −1) or below (1): their neighbour, or
    /// the one already found for that neighbour.
    std::vector<Side> sides(int nStep) const
    {
        std::vector<Side> vecSide(m_nPixels);
        const int nHeight = m_img.Height();
        for (int n = 0; n < nHeight; ++n) {
            const int y = nStep < 0 ? n : nHeight - 1 - n, nBeside = y + nStep;
            if (nBeside < 0 || nBeside >= nHeight) {
                continue;
            }
            size_t nOther = m_vecRow[nBeside];
            const size_t nOtherEnd = m_vecRow[size_t(nBeside) + 1];
            for (size_t nRun = m_vecRow[y]; nRun < m_vecRow[size_t(y) + 1]; ++nRun) {
                for (int x = m_vecRun[nRun].nFirst; x <= m_vecRun[nRun].nLast; ++x) {
                    Side& side = vecSide[m_vecStart[nRun] + size_t(x - m_vecRun[nRun].nFirst)];
                    while (nOther < nOtherEnd && m_vecRun[nOther].nLast < x) {
                        ++nOther;
                    }
                    if (nOther == nOtherEnd || m_vecRun[nOther].nFirst > x) {
                        side = {at(x, nBeside), 1};
                        continue;
                    }
                    side = vecSide[m_vecStart[nOther] + size_t(x - m_vecRun[nOther].nFirst)];
                    side.nDistance += side.nDistance > 0 ? 1 : 0;
                }
            }
        }
        return vecSide;
    }

    CImgObj<float>& m_img;
    const std::vector<PixelRun> m_vecRun;
    std::vector<size_t> m_vecRow;    // first run of each row; the last entry is the end
    std::vector<size_t> m_vecStart;  // number of pixels before each run
    size_t m_nPixels = 0;
};

}  // namespace

qint64 fillBadPixels(CImgObj<float>& img)
{
    const size_t nPixels = size_t(std::max(0, img.Width())) * size_t(std::max(0, img.Height()));
    qint64 nBad = 0;
    // A usable pixel fills its row in the first round, and this row reaches into each column in the second.
    for (int nRound = 0; nRound < 2; ++nRound) {
        CBadPixels bad(img);
        nBad = nRound == 0 ? qint64(bad.count()) : nBad;
        if (bad.count() == nPixels) {
            std::fill_n(img.Data(), nPixels, 0.f);
        }
        if (bad.count() == nPixels || bad.count() == 0) {
            return nBad;
        }
        bad.fill();
    }
    return nBad;
}

}  // namespace tessera
