// COptionReader: the values of a command line, with the first that is wrong.
#pragma once

#include <QCommandLineParser>
#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessera {

constexpr double g_dfLarge = 1e300;  ///< the limit of a number that has none

/// Whether "auto" may stand in the place of a number, or also "as-given".
enum class AutoValue { NotAllowed, Allowed, OrAsGiven };

/// Takes values by the names of their options, without the dashes. What is wrong is noted, and the value that
/// comes back then says nothing: the caller looks at error() when everything is read.
class COptionReader {
public:
    /// @param parser  has parsed the command line; must outlive the reader
    explicit COptionReader(const QCommandLineParser& parser) : m_parser(parser) {}

    bool isSet(const QString& strName) const { return m_parser.isSet(strName); }
    /// The values of an option that may be given several times.
    QStringList values(const QString& strName) const { return m_parser.values(strName); }
    /// A file or a folder, which has to have a name; empty where none is given.
    QString name(const QString& strName);
    /// The place of the value in a list.
    int choice(const QString& strName, const QStringList& listValue, int nDefault);
    int wholeNumber(const QString& strName, int nMinimum, int nMaximum, int nDefault);
    /// @return none where the number is not given, or one of these words
    std::optional<double> number(const QString& strName, double dfMinimum, double dfMaximum,
                                 AutoValue autoValue);
    /// "X,Y,SIZE" in whole pixels: a square whose even side is at least 16.
    /// @return none where it is not given, or "auto"
    std::optional<QRect> region(const QString& strName);

    /// Notes what is wrong, unless something else is or the text is empty.
    void refuse(const QString& strError);
    /// The first thing that is wrong; empty if nothing is.
    const QString& error() const { return m_strError; }

private:
    const QCommandLineParser& m_parser;
    QString m_strError;
};

}  // namespace tessera
