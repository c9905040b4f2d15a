// The colour-matching dialog in GTK 3.
#include "gtk_dialog.h"

#include <gtk/gtk.h>
#include <tesk/path.h>
#include <tesk/export_guard.h>

#include <cstdlib>

#include "installed_profiles.h"

namespace tesk::icmui {
namespace {

constexpr const char* kTitle = "Colour Management";

struct Widgets {
    GtkWidget* enable = nullptr;
    GtkWidget* monitor = nullptr;
    GtkWidget* renderIntent = nullptr;
    GtkWidget* proofing = nullptr;
    GtkWidget* printer = nullptr;
    GtkWidget* target = nullptr;
    GtkWidget* proofIntent = nullptr;
    DWORD flags = 0;
};

bool GtkReady() {
    const char* display = std::getenv("DISPLAY");
    if (!display || !*display) return false;
    static const bool ready = gtk_init_check(nullptr, nullptr);
    return ready;
}

GtkWidget* IntentChooser(DWORD intent) {
    GtkWidget* combo = gtk_combo_box_text_new();
    // In the order of the intent numbers.
    for (const char* name : {"Perceptual", "Relative colorimetric", "Saturation", "Absolute colorimetric"})
        gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(combo), name);
    gtk_combo_box_set_active(GTK_COMBO_BOX(combo), gint(intent));
    return combo;
}

// Profiles of the wanted classes (all when `classes` is empty); the current
// choice stays offered even when it is not installed.
GtkWidget* ProfileChooser(const std::vector<InstalledProfile>& profiles, std::initializer_list<unsigned> classes,
                          const std::wstring& current, bool descriptions) {
    GtkWidget* combo = gtk_combo_box_text_new();
    gtk_combo_box_text_append(GTK_COMBO_BOX_TEXT(combo), "", "(none)");
    bool found = current.empty();
    for (const InstalledProfile& profile : profiles) {
        bool wanted = classes.size() == 0;
        for (unsigned c : classes) wanted |= profile.deviceClass == c;
        if (!wanted && profile.fileName != current) continue;
        std::string id = path::Utf8(profile.fileName);
        std::string text = path::Utf8(descriptions ? profile.description : profile.fileName);
        gtk_combo_box_text_append(GTK_COMBO_BOX_TEXT(combo), id.c_str(), text.c_str());
        found |= profile.fileName == current;
    }
    std::string currentId = path::Utf8(current);
    if (!found) gtk_combo_box_text_append(GTK_COMBO_BOX_TEXT(combo), currentId.c_str(), currentId.c_str());
    gtk_combo_box_set_active_id(GTK_COMBO_BOX(combo), currentId.c_str());
    return combo;
}

void Attach(GtkGrid* grid, int row, const char* label, GtkWidget* widget) {
    GtkWidget* caption = gtk_label_new_with_mnemonic(label);
    gtk_label_set_mnemonic_widget(GTK_LABEL(caption), widget);
    gtk_widget_set_halign(caption, GTK_ALIGN_END);
    gtk_grid_attach(grid, caption, 0, row, 1, 1);
    gtk_widget_set_hexpand(widget, TRUE);
    gtk_grid_attach(grid, widget, 1, row, 1, 1);
}

void UpdateSensitivity(GtkWidget*, gpointer data) {
    auto* w = static_cast<Widgets*>(data);
    bool enabled = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(w->enable));
    bool proofing = enabled && gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(w->proofing));
    bool intents = !(w->flags & CMS_DISABLEINTENT);
    gtk_widget_set_sensitive(w->monitor, enabled);
    gtk_widget_set_sensitive(w->printer, enabled);
    gtk_widget_set_sensitive(w->renderIntent, enabled && intents && !(w->flags & CMS_DISABLERENDERINTENT));
    gtk_widget_set_sensitive(w->proofing, enabled);
    gtk_widget_set_sensitive(w->target, proofing);
    gtk_widget_set_sensitive(w->proofIntent, proofing && intents);
}

std::wstring ChosenProfile(GtkWidget* combo) {
    const char* id = gtk_combo_box_get_active_id(GTK_COMBO_BOX(combo));
    return id ? path::Wide(id) : std::wstring();
}

Choices Read(const Widgets& w, Choices choices) {
    choices.enableIcm = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(w.enable));
    choices.proofing = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(w.proofing));
    choices.monitorProfile = ChosenProfile(w.monitor);
    choices.printerProfile = ChosenProfile(w.printer);
    choices.targetProfile = ChosenProfile(w.target);
    if (gint intent = gtk_combo_box_get_active(GTK_COMBO_BOX(w.renderIntent)); intent >= 0)
        choices.renderIntent = DWORD(intent);
    if (gint intent = gtk_combo_box_get_active(GTK_COMBO_BOX(w.proofIntent)); intent >= 0)
        choices.proofIntent = DWORD(intent);
    return choices;
}

void Flush() {
    while (gtk_events_pending()) gtk_main_iteration();
}

}  // namespace

DialogResult RunDialog(COLORMATCHSETUPW& setup, Choices& choices) {
    if (!GtkReady()) return DialogResult::Unavailable;
    const bool descriptions = setup.dwFlags & CMS_USEDESCRIPTION;
    const bool apply = (setup.dwFlags & CMS_USEAPPLYCALLBACK) && setup.lpfnApplyCallback;
    std::vector<InstalledProfile> profiles = InstalledProfiles();

    GtkWidget* dialog = gtk_dialog_new();
    gtk_window_set_title(GTK_WINDOW(dialog), kTitle);
    gtk_window_set_resizable(GTK_WINDOW(dialog), FALSE);
    gtk_dialog_add_button(GTK_DIALOG(dialog), "_Cancel", GTK_RESPONSE_CANCEL);
    if (apply) gtk_dialog_add_button(GTK_DIALOG(dialog), "_Apply", GTK_RESPONSE_APPLY);
    gtk_dialog_add_button(GTK_DIALOG(dialog), "_OK", GTK_RESPONSE_OK);
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_OK);

    Widgets w;
    w.flags = setup.dwFlags;
    w.enable = gtk_check_button_new_with_mnemonic("_Enable colour management");
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(w.enable), choices.enableIcm);
    w.monitor = ProfileChooser(profiles, {'mntr'}, choices.monitorProfile, descriptions);
    w.renderIntent = IntentChooser(choices.renderIntent);
    w.proofing = gtk_check_button_new_with_mnemonic("_Proof for another device");
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(w.proofing), choices.proofing);
    w.printer = ProfileChooser(profiles, {'prtr'}, choices.printerProfile, descriptions);
    w.target = ProfileChooser(profiles, {}, choices.targetProfile, descriptions);
    w.proofIntent = IntentChooser(choices.proofIntent);

    GtkWidget* grid = gtk_grid_new();
    gtk_grid_set_row_spacing(GTK_GRID(grid), 6);
    gtk_grid_set_column_spacing(GTK_GRID(grid), 12);
    gtk_container_set_border_width(GTK_CONTAINER(grid), 12);
    gtk_grid_attach(GTK_GRID(grid), w.enable, 0, 0, 2, 1);
    Attach(GTK_GRID(grid), 1, "_Monitor profile:", w.monitor);
    Attach(GTK_GRID(grid), 2, "Printer p_rofile:", w.printer);
    Attach(GTK_GRID(grid), 3, "Rendering _intent:", w.renderIntent);
    gtk_grid_attach(GTK_GRID(grid), w.proofing, 0, 4, 2, 1);
    Attach(GTK_GRID(grid), 5, "_Simulated device:", w.target);
    Attach(GTK_GRID(grid), 6, "Proo_fing intent:", w.proofIntent);
    gtk_container_add(GTK_CONTAINER(gtk_dialog_get_content_area(GTK_DIALOG(dialog))), grid);
    g_signal_connect(w.enable, "toggled", G_CALLBACK(UpdateSensitivity), &w);
    g_signal_connect(w.proofing, "toggled", G_CALLBACK(UpdateSensitivity), &w);
    UpdateSensitivity(nullptr, &w);
    gtk_widget_show_all(dialog);
    // The rendering intent is what users come to change most.
    gtk_widget_grab_focus(w.renderIntent);

    DialogResult result = DialogResult::Cancelled;
    for (;;) {
        gint response = gtk_dialog_run(GTK_DIALOG(dialog));
        if (response == GTK_RESPONSE_APPLY) {
            Choices applied = Read(w, choices);
            WriteRecord(applied, setup);
            setup.lpfnApplyCallback(&setup, setup.lParamApplyCallback);
            continue;
        }
        if (response == GTK_RESPONSE_OK) {
            choices = Read(w, choices);
            result = DialogResult::Accepted;
        }
        break;
    }
    gtk_widget_destroy(dialog);
    Flush();
    return result;
}

}  // namespace tesk::icmui

// The one entry point of the dialog module, found by name when it is loaded.
extern "C" __attribute__((visibility("default"))) int TeskRunColorMatchingDialog(COLORMATCHSETUPW* setup,
                                                                               tesk::icmui::Choices* choices) try {
    return static_cast<int>(tesk::icmui::RunDialog(*setup, *choices));
} catch (...) {
    return tesk::FailAtBoundary(static_cast<int>(tesk::icmui::DialogResult::Unavailable));
}
