// SelectionModel: which reflections and frame peaks are chosen, for all views.
#pragma once

#include <QObject>

#include <vector>

namespace tessera {

/// What is looked at: a reflection, one of its peaks, or a peak of no reflection; and on which frame.
struct CurrentSpot {
    int nReflection = -1;  ///< nID; −1: of no reflection
    int nPeak = -1;        ///< number of the frame peak; −1: none is known
    int nFrame = -1;       ///< from 0

    /// Whether both are the same spot.
    bool operator==(const CurrentSpot& other) const
    {
        return nReflection == other.nReflection && nPeak == other.nPeak && nFrame == other.nFrame;
    }
};

/// The one selection of the window. It knows numbers alone; what they stand for is the business of
/// CReflectionLinks, and whoever replaces reflections or peaks clears it.
class SelectionModel : public QObject {
    Q_OBJECT

public:
    /// What a choice does with what is chosen already: as a click alone, with Shift, with Control.
    enum class Way { Replace, Add, Toggle };

    using QObject::QObject;

    const std::vector<int>& reflections() const { return m_vecReflection; }  ///< nIDs, ascending
    /// Frame peaks of no reflection, ascending.
    const std::vector<int>& lonePeaks() const { return m_vecLonePeak; }
    const CurrentSpot& current() const { return m_current; }  ///< of the chosen ones, or of nothing
    bool isEmpty() const { return m_vecReflection.empty() && m_vecLonePeak.empty(); }  ///< nothing is chosen

    /// Chooses reflections and lone peaks, in any order, and looks at `current`. Where Way::Toggle takes that
    /// out, one of those that stay is looked at, without a frame.
    /// @param pSource  who has chosen, and shows it already; handed on with changed()
    void choose(const std::vector<int>& vecReflection, const std::vector<int>& vecLonePeak,
                const CurrentSpot& current, Way way, const QObject* pSource);
    /// Looks at another of the chosen ones, or at another of its peaks.
    void setCurrent(const CurrentSpot& current, const QObject* pSource);
    /// Chooses nothing.
    void clear(const QObject* pSource);

signals:
    /// After each choice, also of what is chosen already: a view may have moved on.
    void changed(const QObject* pSource);

private:
    std::vector<int> m_vecReflection;
    std::vector<int> m_vecLonePeak;
    CurrentSpot m_current;
};

}  // namespace tessera
