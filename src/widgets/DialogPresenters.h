#pragma once

class QWidget;

// Installs the real alert and file-panel windows behind the core's Alerts and FilePanels services.
// Alerts are window-modal over `parent` when it is visible (a sheet), application-modal otherwise.
namespace DialogPresenters {
void install(QWidget *parent = nullptr);
void setParent(QWidget *parent);
} // namespace DialogPresenters
