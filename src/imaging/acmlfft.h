// CAcmlFft: the two-dimensional Fourier transform of frames, with a plan kept for one size.
#pragma once

#include "imaging/complex.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace tessera {

/// An in-place complex 2D transform over FFTW's one-dimensional plans in single precision: all rows,
/// then all columns, each a block at a time through an aligned scratch buffer of the plan.
///
/// Data stay in natural layout (zero frequency at element (0, 0)). Forward has the kernel exp(−2πi(…))
/// and no scaling, backward divides by width × height, so that forward and backward give back the
/// input. Equal input gives equal output to the last bit in every run, wherever the buffer lies: the
/// plans are estimated, not measured, and only ever see the scratch buffer.
///
/// One object serves one thread at a time; several objects may run side by side.
class CAcmlFft {
public:
    /// Without a plan.
    CAcmlFft();
    ~CAcmlFft();
    CAcmlFft(const CAcmlFft&) = delete;
    CAcmlFft& operator=(const CAcmlFft&) = delete;

    /// Makes the plan for nWidth × nHeight elements (any sides from 1 on).
    /// @return 2 when a plan of just this size stands, 1 when it was made, 0 when it could not be
    ///         made; no plan stands then
    int Init(int nWidth, int nHeight);

    /// Transforms nWidth × nHeight elements in place; makes the plan first when the size differs.
    /// @param nDirection  −1 forward, any other value backward
    /// @return 1, or 0 with the data as they were: null data or no plan
    int Transform(COMPLEX* pData, int nWidth, int nHeight, int nDirection);

    /// Fills one row of a real image: nWidth floats.
    using FnFillRow = std::function<void(int nRow, float* pRow)>;
    /// Elements of the half spectrum of a real image: the columns 0 … nWidth/2, each nHeight elements on
    /// end, in blocks of some of them with a gap between. The others follow from F(−k) = conj F(k).
    static std::size_t HalfCount(int nWidth, int nHeight);
    /// Where the element of column nX and row nY stands in it.
    static std::size_t HalfIndex(int nX, int nY, int nHeight);

    /// Forward transform of a real image, which is half the work of Transform().
    /// @param fnRow  called once for each row, upwards
    /// @param pHalf  takes HalfCount() elements; the columns of the last block beyond nWidth/2 become 0
    /// @return 1, or 0 with nothing called: null data or no plan
    int TransformReal(const FnFillRow& fnRow, int nWidth, int nHeight, COMPLEX* pHalf);

    /// An image that TransformFiltered() makes.
    struct FilteredImage {
        float* pData = nullptr;  ///< takes nWidth × nHeight pixels; null: not wanted
        float fConstant = 0.f;   ///< added to each of them
    };

    /// Backward transform of a real image's spectrum times S + i·B, two even real filters: the real part
    /// is the image filtered by S, the imaginary part that by B.
    ///
    /// The zero frequency is left out: single precision carries the constant that it stands for better
    /// beside the transform.
    /// @param pHalf    of TransformReal(), not changed
    /// @param pFilter  S + i·B in the layout of pHalf
    /// @param pWork    2 × HalfCount() elements of work space
    /// @return 1, or 0 with nothing written: null data or no plan
    int TransformFiltered(const COMPLEX* pHalf, const COMPLEX* pFilter, int nWidth, int nHeight,
                          COMPLEX* pWork, const FilteredImage& imgS, const FilteredImage& imgB);

    /// The image filtered by S, if it is wanted: FilterInPlace() leaves it in the work space.
    struct KeptImage {
        bool bWanted = false;
        float fConstant = 0.f;  ///< added to each pixel
    };
    /// Takes a row of a filtered image: nWidth floats, to be had only during the call.
    using FnTakeRow = std::function<void(int nRow, const float* pRow)>;

    /// The same in the least memory, and to the bit: no image is written but what is kept of S.
    ///
    /// @param pWork    2 × HalfCount() elements, of which the second half holds the spectrum of
    ///                 TransformReal(), which is used up
    /// @param fConstantB  added to each pixel of the image filtered by B
    /// @param fnRowB   takes this image row by row, upwards
    /// @return 1, or 0 with nothing called: null data or no plan
    int FilterInPlace(COMPLEX* pWork, const COMPLEX* pFilter, int nWidth, int nHeight, KeptImage keptS,
                      float fConstantB, const FnTakeRow& fnRowB);

    /// A pixel of what FilterInPlace() has kept in its work space, for any pixel of the image.
    static float KeptPixel(const COMPLEX* pWork, int nX, int nY, int nHeight);

    /// Lets the plan go.
    void Free();

    /// Size of the plan that stands, 0 when none.
    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }

private:
    void FilterColumns(const COMPLEX* pHalf, const COMPLEX* pFilter, COMPLEX* pWork);
    template <class FnRows>
    void TransformFilteredRows(const COMPLEX* pWork, const FnRows& fnRows);

    struct Plan;
    int m_nWidth = 0;
    int m_nHeight = 0;
    std::unique_ptr<Plan> m_pComm;
};

}  // namespace tessera
