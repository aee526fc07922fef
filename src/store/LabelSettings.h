#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

// What the Labels preference pane edits: "Preferences - Labels", one text per key.
namespace LabelSettings {

// The label keys in the order the pane lists them.
const QStringList &orderedKeys();
// The text the pane shows for each key (the stored label, or its default).
QVariantMap load();
// `setLabels`: writes the whole dictionary from the given texts; a key not given keeps its
// current label.
void save(const QVariantMap &labels);
// `setDefaultLabels:`
void resetToDefaults();

} // namespace LabelSettings
