// FrameNumbering: the numbers and names by which other programs find the frames of a series.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tessera {

/// The numbers and names of frames. Programs that find frames by a template with a number also compute the
/// rotation from the number: every frame turns by the same angle, and a number without a frame is a missing
/// frame.
struct FrameNumbering {
    std::vector<int> listNumber;  ///< of each frame, increasing, at least 1
    QString strPrefix;            ///< beginning of all names, before the number
    QString strSuffix;            ///< end of all names, after the number
    int nDigits = 5;              ///< digits of the number

    /// The first number; 1 without frames.
    int first() const { return listNumber.empty() ? 1 : listNumber.front(); }
    /// The last number; 0 without frames.
    int last() const { return listNumber.empty() ? 0 : listNumber.back(); }
    /// The name of the n-th frame, from 0.
    QString name(size_t n) const { return nameOf(listNumber[n]); }
    /// The name with a number.
    QString nameOf(int nNumber) const;
    /// The name with a character in place of each digit: "f_????.img".
    QString pattern(QChar chDigit) const;
    /// The numbers between the first and the last that have no frame, as ranges.
    std::vector<std::pair<int, int>> missing() const;
};

/// The numbering of names that are equal except for one number with the same digits in each.
/// @return nothing for other names, or where the numbers do not increase from 1 or more
std::optional<FrameNumbering> numberingOfNames(const QStringList& listName);

/// A straight line of angles against numbers.
struct AngleLine {
    double dfAtZero = 0;  ///< angle at number 0, degrees
    double dfStep = 0;    ///< step from number to number, degrees
    double dfWorst = 0;   ///< greatest deviation of an angle, degrees
};
/// Fits the line.
AngleLine angleLine(const std::vector<int>& listNumber, const std::vector<double>& listAngle);

/// Whether all angles are within a quarter of a step of the line, so that they are proportional to the
/// numbers.
bool followsNumbers(const AngleLine& line);

/// A numbering by the angles, with a gap where the crystal has turned by more than a step. Where the angles
/// are no multiples of a step, the numbers are 1 to n. Prefix and suffix are empty.
FrameNumbering numberingOfAngles(const std::vector<double>& listAngle);

}  // namespace tessera
