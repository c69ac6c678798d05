#include "runtime/skin_preference.h"

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

namespace keys = preference_keys;

using testing::TempFolder;

class SkinPreferenceTest : public ::testing::Test {
  protected:
    [[nodiscard]] Preferences preferences() const {
        return Preferences(Preferences::liveFile(m_temp.path() / "Copperwick"));
    }

  private:
    TempFolder m_temp;
};

TEST_F(SkinPreferenceTest, NothingStoredIsForestDarkWithTheIconFollowing) {
    const SkinPreference loaded = SkinPreference::load(preferences());
    EXPECT_EQ(loaded.skin, Skin::forest);
    EXPECT_EQ(loaded.appearance, AppearanceMode::dark);
    EXPECT_TRUE(loaded.iconFollowsSkin);
}

TEST_F(SkinPreferenceTest, UnknownOrMistypedValuesFallBackOneByOne) {
    Preferences stored = preferences();
    stored.set(keys::appearanceSkin, "ocean");
    stored.set(keys::appearanceMode, "midnight");
    stored.set(keys::appearanceIconFollowsSkin, "no");
    const SkinPreference loaded = SkinPreference::load(preferences());
    EXPECT_EQ(loaded.skin, Skin::forest);
    EXPECT_EQ(loaded.appearance, AppearanceMode::dark);
    // A text where a switch belongs is no answer, so the icon keeps following.
    EXPECT_TRUE(loaded.iconFollowsSkin);

    // Raw values are case-sensitive: "Sky" is not a skin.
    stored.set(keys::appearanceSkin, "Sky");
    EXPECT_EQ(SkinPreference::load(preferences()).skin, Skin::forest);
}

TEST_F(SkinPreferenceTest, TheOlderAppearanceKeyIsCarriedOver) {
    const std::array<std::pair<const char*, AppearanceMode>, 4> cases{{
        {"light", AppearanceMode::light},
        {"system", AppearanceMode::followMac},
        {"dark", AppearanceMode::dark},
        {"followMac", AppearanceMode::dark},
    }};
    for (const auto& [old, expected] : cases) {
        TempFolder temp;
        Preferences stored(Preferences::liveFile(temp.path()));
        stored.set(keys::appearance, old);
        EXPECT_EQ(SkinPreference::load(stored).appearance, expected) << old;
    }

    // A new key that holds nothing known defers to the old one.
    Preferences stored = preferences();
    stored.set(keys::appearance, "system");
    stored.set(keys::appearanceMode, "automatic");
    EXPECT_EQ(SkinPreference::load(preferences()).appearance, AppearanceMode::followMac);
}

TEST_F(SkinPreferenceTest, AfterASaveTheNewModeKeyDecides) {
    Preferences stored = preferences();
    stored.set(keys::appearance, "light");
    SkinPreference loaded = SkinPreference::load(stored);
    ASSERT_EQ(loaded.appearance, AppearanceMode::light);
    loaded.save(stored);
    EXPECT_EQ(stored.stringValue(keys::appearanceMode), "light");

    // Had the older key still counted first, this would read as following.
    stored.set(keys::appearance, "system");
    EXPECT_EQ(SkinPreference::load(preferences()).appearance, AppearanceMode::light);

    loaded.appearance = AppearanceMode::dark;
    loaded.save(stored);
    EXPECT_EQ(SkinPreference::load(preferences()).appearance, AppearanceMode::dark);
}

TEST_F(SkinPreferenceTest, EveryChoiceSurvivesASaveAndALoad) {
    for (const Skin skin : kAllSkins) {
        for (const AppearanceMode mode : allCases<AppearanceMode>()) {
            for (const bool follows : {true, false}) {
                const SkinPreference chosen{skin, mode, follows};
                Preferences stored = preferences();
                chosen.save(stored);
                EXPECT_EQ(SkinPreference::load(preferences()), chosen)
                    << rawValue(skin) << " " << rawValue(mode) << " " << follows;
            }
        }
    }
    Preferences stored = preferences();
    EXPECT_EQ(stored.stringValue(keys::appearanceSkin), "wisteria");
    EXPECT_EQ(stored.stringValue(keys::appearanceMode), "dark");
    EXPECT_EQ(stored.boolValue(keys::appearanceIconFollowsSkin), false);
}

}  // namespace
}  // namespace copperwick
