#pragma once

// The settings card of the look of the application: the six skins, each
// with its tagline and its colours, whether the window follows the system's
// light or dark setting or fixes one, and whether the app icon follows the
// skin. A choice applies at once through the application's SkinStore, which
// also keeps it in the preferences. Main thread only.

#include <map>

#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>

#include "app/shell/skin_store.h"
#include "app/widgets/section_card.h"

namespace copperwick::app {

class AppearanceCard : public SectionCard {
    Q_OBJECT

  public:
    // `skins` must outlive the card.
    explicit AppearanceCard(SkinStore& skins, QWidget* parent = nullptr);

    [[nodiscard]] QRadioButton* skinButton(Skin skin) const { return m_skinButtons.at(skin); }
    [[nodiscard]] QRadioButton* modeButton(AppearanceMode mode) const {
        return m_modeButtons.at(mode);
    }
    [[nodiscard]] QCheckBox* iconBox() const { return m_icon; }

  private:
    void showPreference();
    void choose(const SkinPreference& preference);

    SkinStore& m_skins;
    std::map<Skin, QRadioButton*> m_skinButtons;
    std::map<AppearanceMode, QRadioButton*> m_modeButtons;
    QButtonGroup* m_skinGroup = nullptr;
    QButtonGroup* m_modeGroup = nullptr;
    QCheckBox* m_icon = nullptr;
    QLabel* m_iconPreview = nullptr;
};

}  // namespace copperwick::app
