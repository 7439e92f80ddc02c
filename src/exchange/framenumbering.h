// FrameNumbering: the numbers and names by which other programs find the frames of a series.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tessera {

/// Programs that take frames by a numbered template take the rotation from the number too: every frame turns
/// on by the same angle, and a number without a frame is a frame that is missing.
struct FrameNumbering {
    std::vector<int> listNumber;  ///< of each frame, growing, from 1 on
    QString strPrefix;            ///< of all names, what stands before the number
    QString strSuffix;            ///< and behind it
    int nDigits = 5;

    int first() const { return listNumber.empty() ? 1 : listNumber.front(); }
    int last() const { return listNumber.empty() ? 0 : listNumber.back(); }
    /// Name of the n-th frame, from 0.
    QString name(size_t n) const { return nameOf(listNumber[n]); }
    /// Name with that number.
    QString nameOf(int nNumber) const;
    /// The name with a character in the place of each digit: "f_????.img".
    QString pattern(QChar chDigit) const;
    /// Numbers between the first and the last that no frame has, as ranges.
    std::vector<std::pair<int, int>> missing() const;
};

/// The numbering that names have of themselves: alike but for one number of as many digits in each.
/// @return none where they have not, or the numbers do not grow from 1 or more
std::optional<FrameNumbering> numberingOfNames(const QStringList& listName);

/// The straight line of angles along numbers.
struct AngleLine {
    double dfAtZero = 0;  ///< degrees, at number 0
    double dfStep = 0;    ///< degrees from number to number
    double dfWorst = 0;   ///< degrees, the greatest departure of an angle from it
};
AngleLine angleLine(const std::vector<int>& listNumber, const std::vector<double>& listAngle);

/// Whether the line holds the angles to a quarter of a step: the numbers count the turns then.
bool followsNumbers(const AngleLine& line);

/// A numbering by the angles, with a gap where the crystal has turned on by more than a step; where they do
/// not go by steps, simply 1 to n. Prefix and suffix are empty.
FrameNumbering numberingOfAngles(const std::vector<double>& listAngle);

}  // namespace tessera
