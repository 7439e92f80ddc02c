// COptionReader: reads and checks the values of options.
#pragma once

#include <QCommandLineParser>
#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

constexpr double g_dfLarge = 1e300;  ///< stands for an infinite limit of a number

/// Whether the words "auto" and "as-given" are accepted instead of a number.
enum class AutoValue { NotAllowed, Allowed, OrAsGiven };

/// Reads values by the names of their options, without the dashes. The first error is recorded; the value
/// that is returned for a wrong option must not be used. The caller checks error() after all options are
/// read.
class COptionReader {
public:
    /// @param parser  has parsed the command line; must outlive the reader
    explicit COptionReader(const QCommandLineParser& parser) : m_parser(parser) {}

    /// Whether an option was given.
    bool isSet(const QString& strName) const { return m_parser.isSet(strName); }
    /// The values of an option that may be given several times.
    QStringList values(const QString& strName) const { return m_parser.values(strName); }
    /// The name of a file or folder, which must not be empty; empty if the option was not given.
    QString name(const QString& strName);
    /// The index of the value in a list of allowed values.
    int choice(const QString& strName, const QStringList& listValue, int nDefault);
    /// A whole number within limits.
    int wholeNumber(const QString& strName, int nMinimum, int nMaximum, int nDefault);
    /// A number within limits.
    /// @return none if the option was not given, or is "auto" or "as-given"
    std::optional<double> number(const QString& strName, double dfMinimum, double dfMaximum,
                                 AutoValue autoValue);
    /// "X,Y,SIZE" in whole pixels: a square whose side is even and at least 16.
    /// @return none if the option was not given, or is "auto"
    std::optional<QRect> region(const QString& strName);

    /// Records an error, unless there is one already or the text is empty.
    void refuse(const QString& strError);
    /// The first error; empty if there is none.
    const QString& error() const { return m_strError; }

private:
    const QCommandLineParser& m_parser;
    QString m_strError;
};

}  // namespace tessera
