#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The arithmetic of the GPA calculator: each cell's text is a grade-point number or a letter grade,
// and the result is their plain mean.
namespace GradeAverage {

inline const QString DisplayPrefix = QStringLiteral("GPA: ");
inline const QString EmptyDisplay = QStringLiteral("GPA: 0.0");

// The number at the start of the text (leading blanks skipped), 0 when there is none.
double leadingNumber(const QString &text);
// Points of a letter grade typed exactly ("A+", "b-", "F", ...); nullopt for anything else.
std::optional<double> letterPoints(const QString &text);
// The mean as the number pattern "0.0##" writes it: 4 -> "4.0", 3.85 -> "3.85", 11/3 -> "3.667".
QString formatMean(double mean);
// "GPA: ..." for the cells in reading order; "GPA: 0.0" when nothing counts.
QString displayText(const QStringList &cells);

} // namespace GradeAverage
