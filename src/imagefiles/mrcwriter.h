// CMrcWriter: an MRC stack written section by section.
#pragma once

#include "records/wholefile.h"

#include <QString>

#include <memory>

namespace tessera {

/// Writes a stack whose sections need not lie in memory together; beside them it takes room for one.
/// `T` is `float` (MODE 2), `short` (1) or `unsigned short` (6).
///
/// Rows are stored bottom up, as `ReadMRC` takes them. The cell is NX, NY, NZ; density statistics, map word
/// and labels stay zero. The file appears whole under its name with commit(), or not at all.
/// Source: Cheng et al. (2015), J. Struct. Biol. 192, 146.
template <class T>
class CMrcWriter {
public:
    CMrcWriter() = default;
    CMrcWriter(const CMrcWriter&) = delete;
    CMrcWriter& operator=(const CMrcWriter&) = delete;

    /// Begins a file of nZ sections of nX columns and nY rows, none of them below 0. Once per object.
    /// @return false when the file can't be created or written, or memory for a section runs out
    bool open(const QString& strFileName, int nX, int nY, int nZ);
    /// Appends a section of nX × nY values, first row of the image first.
    /// @return false when it can't be written, or nothing is open
    bool addSection(const T* pData);
    /// Puts the file in place.
    /// @param pstrReason  may be null; on failure the file's name and what is wrong
    /// @return false when anything went wrong since open() or sections are missing; a former file then
    ///         stands as it was
    bool commit(QString* pstrReason = nullptr);

private:
    CWholeFile m_file;
    std::unique_ptr<T[]> m_pMirrored;
    int m_nX = 0;
    int m_nY = 0;
    int m_nMissing = 0;  ///< sections still to come
    bool m_bOk = false;
};

extern template class CMrcWriter<float>;
extern template class CMrcWriter<short>;
extern template class CMrcWriter<unsigned short>;

}  // namespace tessera
