// Tables of docs/formats.md, for tests of what the driver does not write.
#pragma once

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

/// The words in the first cells of the table behind the comment "<!-- KIND: NAME -->", in their order.
/// @return empty where there is no such table
inline QStringList wordsOfFormat(const QString& strKindAndName)
{
    // Not every folder of tests has data.
    QFile file(QDir::cleanPath(QStringLiteral(TESSERA_TEST_DATA "/../../../docs/formats.md")));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QString strText = QString::fromUtf8(file.readAll());
    const QString strTable = strText.section(QStringLiteral("<!-- %1 -->\n").arg(strKindAndName), 1, 1)
                                 .section(QStringLiteral("\n\n"), 0, 0);
    static const QRegularExpression s_reWord(QStringLiteral("`([^`]+)`"));
    QStringList listWord;
    for (const QString& strLine : strTable.split(QLatin1Char('\n'))) {
        auto it = s_reWord.globalMatch(strLine.section(QLatin1Char('|'), 1, 1));
        while (it.hasNext()) {
            listWord.append(it.next().captured(1));
        }
    }
    return listWord;
}
