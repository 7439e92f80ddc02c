#include "road/takesuggestion.h"

#include <algorithm>

namespace tessera {

bool anyIsOpen(const GivenValues& listGiven)
{
    return std::any_of(listGiven.begin(), listGiven.end(),
                       [](const auto& given) { return !given.second->has_value(); });
}

void takeSuggestion(const Suggestion& suggestion, const GivenValues& listGiven,
                    const ParameterRecords& records, CRunReport& report)
{
    for (const SuggestedValue& value : suggestion) {
        const bool bOpen = std::any_of(listGiven.begin(), listGiven.end(), [&](const auto& given) {
            return given.first == value.member && !given.second->has_value();
        });
        const Parameter& row = parameterOf(value.member);
        if (!bOpen || row.value(records) == value.dfValue) {
            continue;
        }
        row.setValue(records, value.dfValue);
        report.addMessage(QStringLiteral("%1 %2 %3, as %4.")
                              .arg(QLatin1String(row.option.pszName))
                              .arg(value.dfValue)
                              .arg(QString::fromUtf8(row.option.pszUnit))
                              .arg(value.strWhy),
                          Severity::Info);
    }
}

void takeGiven(const GivenValues& listGiven, const ParameterRecords& records)
{
    for (const auto& given : listGiven) {
        if (given.second->has_value()) {
            parameterOf(given.first).setValue(records, **given.second);
        }
    }
}

}  // namespace tessera
