#pragma once

#include <QString>

// What the Personal Info preference pane edits: "Preferences - Personal Info".
struct PersonalInfoSettings {
    QString name;
    QString school;
    QString studentID;

    static PersonalInfoSettings load();
    // `setPersonalInfo`: writes the whole dictionary.
    void save() const;
};
