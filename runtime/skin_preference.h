#pragma once

// The person's choice of skin and appearance, as the preferences file keeps
// it. A value: copyable and equatable. Loading never fails: what is missing
// or unknown reads as the default. Main thread only, like Preferences.

#include "core/presentation/pdf_report_content.h"
#include "core/presentation/skin.h"
#include "runtime/preferences.h"

namespace copperwick {

struct SkinPreference {
    Skin skin = Skin::forest;
    // Dark unless told otherwise, deliberately.
    AppearanceMode appearance = AppearanceMode::dark;
    bool iconFollowsSkin = true;

    // Also reads the older appearance key that earlier versions wrote.
    [[nodiscard]] static SkinPreference load(const Preferences& preferences);
    // Writes the skin, the mode and the icon switch under their current keys.
    void save(Preferences& preferences) const;

    friend bool operator==(const SkinPreference&, const SkinPreference&) = default;
};

// The report style chosen last on the Reports screen; signature until then.
[[nodiscard]] inline PDFReportStyle rememberedPDFStyle(const Preferences& preferences) {
    return enumFromRaw<PDFReportStyle>(
               preferences.stringValue(preference_keys::pdfReportStyle).value_or(""))
        .value_or(PDFReportStyle::signature);
}

}  // namespace copperwick
