#include "runtime/skin_preference.h"

namespace copperwick {

namespace {

namespace keys = preference_keys;

AppearanceMode loadAppearance(const Preferences& preferences) {
    if (const auto raw = preferences.stringValue(keys::appearanceMode)) {
        if (const auto mode = enumFromRaw<AppearanceMode>(*raw))
            return *mode;
    }
    // Carried over from the older key; whatever it doesn't say is dark.
    const auto old = preferences.stringValue(keys::appearance);
    if (old == "light")
        return AppearanceMode::light;
    if (old == "system")
        return AppearanceMode::followMac;
    return AppearanceMode::dark;
}

}  // namespace

SkinPreference SkinPreference::load(const Preferences& preferences) {
    SkinPreference preference;
    if (const auto raw = preferences.stringValue(keys::appearanceSkin))
        preference.skin = enumFromRaw<Skin>(*raw).value_or(Skin::forest);
    preference.appearance = loadAppearance(preferences);
    preference.iconFollowsSkin =
        preferences.boolValue(keys::appearanceIconFollowsSkin).value_or(true);
    return preference;
}

void SkinPreference::save(Preferences& preferences) const {
    preferences.set(keys::appearanceSkin, rawValue(skin));
    preferences.set(keys::appearanceMode, rawValue(appearance));
    preferences.set(keys::appearanceIconFollowsSkin, iconFollowsSkin);
}

}  // namespace copperwick
