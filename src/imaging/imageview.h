// ImageView<T>: an image, or a buffer of lines, in memory that belongs to somebody else.
#pragma once

#include <cstddef>
#include <type_traits>

namespace tessera {

/// Elements of an image row by row, without padding, as CImgObj has them. T may be const. A copy of the view
/// sees the same elements.
template <class T>
struct ImageView {
    T* p = nullptr;
    int nWidth = 0;
    int nHeight = 0;

    T* row(int y) const { return p + std::ptrdiff_t(y) * nWidth; }
    T& at(int x, int y) const { return row(y)[x]; }
    std::size_t count() const { return std::size_t(nWidth) * std::size_t(nHeight); }
};

/// The view of a CImgObj; of a const one its elements are const.
template <class Image>
auto viewOf(Image& img)
{
    return ImageView<std::remove_pointer_t<decltype(img.Data())>>{img.Data(), img.Width(), img.Height()};
}

}  // namespace tessera
