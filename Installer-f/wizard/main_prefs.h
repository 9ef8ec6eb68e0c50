// The settings dialog, and the settings that live in the installer's preference file.
#pragma once

// The modal dialog behind the Options button; returns when it is closed. Every edit takes effect at
// once.
void handle_prefs();

class scan_class;

// Carries the installer's settings through `scan`, in the order of its preference file.
void wizard_prefs_io(scan_class& scan);
