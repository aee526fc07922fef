#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The arithmetic of the finals calculator: what the final exam must bring for an overall 100, 90, 80,
// 70, 60 and 50 per cent, given the current course grade and the final's share of the course grade.
namespace FinalsRequirement {

inline constexpr int Targets[] = {100, 90, 80, 70, 60, 50};

// The leading whole number of the text ("87.9" -> 87, " 12x" -> 12), 0 when there is none.
int leadingInteger(const QString &text);
// The needed final-exam score for one target.
double needed(int target, int grade, int percentage);
// The sentence for one target and its needed score.
QString sentence(int target, double needed);
// The six sentences in target order; nullopt when either text is empty (nothing to show).
std::optional<QStringList> sentences(const QString &gradeText, const QString &percentageText);
// The number pattern "0.": a whole number, rounded half to even; "NaN" for a value that is none.
QString formatWhole(double value);

} // namespace FinalsRequirement
