#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

// The fields an assignment record knows, each with the one spelling its key has in files, in
// preferences (column identifiers, sort selectors) and in exports. A record keeps these in fixed
// slots; any other key a file brings is kept aside and written back unchanged.
enum class AssignmentField : unsigned char {
    Name,
    Date,
    Course,
    Textbook,
    Type,
    Grade,
    Priority,
    Completed,
    Notes,
    Contacts,
    File,
    Snapshot,
    Project,
    Subproject,
    DateCreated,
    DateUpdated,
    // What an assignment remembers of the calendar entry it was imported from (a dictionary).
    CalendarImport,
};

inline constexpr std::size_t AssignmentFieldCount = std::size_t(AssignmentField::CalendarImport) + 1;

namespace AssignmentFields {

inline constexpr std::array<std::u16string_view, AssignmentFieldCount> Keys = {
    u"Name",     u"Date", u"Course",   u"Textbook", u"Type",       u"Grade",        u"Priority",
    u"Completed", u"Notes", u"Contacts", u"File",     u"Snapshot",   u"Project",      u"Subproject",
    u"Date Created", u"Date Updated", u"Calendar Import",
};

// Every field in the order of its key as QString compares them (UTF-16 code units), which is the
// order a record's dictionary is written in.
inline constexpr std::array<AssignmentField, AssignmentFieldCount> KeyOrder = [] {
    std::array<AssignmentField, AssignmentFieldCount> order{};
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = AssignmentField(i);
    // Insertion sort: constant evaluation, seventeen entries.
    for (std::size_t i = 1; i < order.size(); ++i) {
        for (std::size_t j = i; j > 0 && Keys[std::size_t(order[j])].compare(Keys[std::size_t(order[j - 1])]) < 0; --j) {
            const AssignmentField swapped = order[j];
            order[j] = order[j - 1];
            order[j - 1] = swapped;
        }
    }
    return order;
}();

} // namespace AssignmentFields

// The key of a field as a shared string (no allocation per call).
const QString &fieldKey(AssignmentField field);

// The field a key names; nullopt for a key no field has (such keys are kept as they are).
inline std::optional<AssignmentField> fieldFromKey(QStringView key)
{
    const std::u16string_view wanted(reinterpret_cast<const char16_t *>(key.utf16()), std::size_t(key.size()));
    for (std::size_t i = 0; i < AssignmentFieldCount; ++i) {
        if (AssignmentFields::Keys[i] == wanted)
            return AssignmentField(i);
    }
    return std::nullopt;
}
