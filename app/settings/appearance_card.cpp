#include "app/settings/appearance_card.h"

#include <QApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

namespace {

QColor toColor(const RGB& rgb) {
    return QColor::fromRgbF(static_cast<float>(rgb.red), static_cast<float>(rgb.green),
                            static_cast<float>(rgb.blue));
}

// A skin's colours side by side, light form over dark: its accent, window,
// surface and sidebar. The colours are the skin's own data, shown as what
// they are rather than as the palette of the window around them.
class SkinSwatch : public QWidget {
  public:
    SkinSwatch(Skin skin, QWidget* parent) : QWidget(parent), m_skin(skin) {
        setFixedSize(120, 36);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath clip;
        clip.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
        painter.setClipPath(clip);
        const int half = height() / 2;
        for (const bool dark : {false, true}) {
            const SkinPalette colours = copperwick::palette(m_skin, dark);
            const RGB stripes[] = {colours.accent, colours.window, colours.surface,
                                   colours.sidebar};
            const int top = dark ? half : 0;
            const int step = width() / 4;
            for (int index = 0; index < 4; ++index) {
                const int left = index * step;
                const int right = index == 3 ? width() : left + step;
                painter.fillRect(QRect(left, top, right - left, dark ? height() - half : half),
                                 toColor(stripes[index]));
            }
        }
        painter.setClipping(false);
        painter.setPen(QPen(QWidget::palette().color(QPalette::Mid), 1));
        painter.drawPath(clip);
    }

  private:
    Skin m_skin;
};

}  // namespace

AppearanceCard::AppearanceCard(SkinStore& skins, QWidget* parent)
    : SectionCard(QStringLiteral("Appearance"),
                  QStringLiteral("A skin colours the window, the reports you print and the app "
                                 "icon."),
                  "paintpalette", parent),
      m_skins(skins),
      m_skinGroup(new QButtonGroup(this)),
      m_modeGroup(new QButtonGroup(this)) {
    auto* tiles = new QWidget(this);
    auto* grid = new QGridLayout(tiles);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(14);
    int place = 0;
    for (const Skin skin : kAllSkins) {
        auto* tile = new QWidget(tiles);
        auto* layout = new QVBoxLayout(tile);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(4);
        layout->addWidget(new SkinSwatch(skin, tile));
        auto* button = new QRadioButton(toQString(displayName(skin)), tile);
        button->setAccessibleName(button->text());
        button->setAccessibleDescription(toQString(tagline(skin)));
        layout->addWidget(button);
        QLabel* line = noteLabel(toQString(tagline(skin)), tile, true);
        line->setWordWrap(false);
        line->setContentsMargins(22, 0, 0, 0);
        layout->addWidget(line);
        grid->addWidget(tile, place / 3, place % 3);
        ++place;
        m_skinGroup->addButton(button, static_cast<int>(skin));
        m_skinButtons[skin] = button;
    }
    body()->addWidget(tiles);

    body()->addSpacing(4);
    body()->addWidget(textLabel(QStringLiteral("Light or dark"), this));
    auto* modes = new QHBoxLayout;
    modes->setSpacing(18);
    for (const AppearanceMode mode :
         {AppearanceMode::followMac, AppearanceMode::light, AppearanceMode::dark}) {
        auto* button = new QRadioButton(toQString(title(mode)), this);
        button->setAccessibleName(button->text());
        modes->addWidget(button);
        m_modeGroup->addButton(button, static_cast<int>(mode));
        m_modeButtons[mode] = button;
    }
    modes->addStretch(1);
    body()->addLayout(modes);

    auto* icon = new QHBoxLayout;
    m_iconPreview = new QLabel(this);
    m_iconPreview->setFixedSize(32, 32);
    icon->addWidget(m_iconPreview);
    m_icon = new QCheckBox(QStringLiteral("App icon follows the skin"), this);
    m_icon->setAccessibleName(m_icon->text());
    icon->addWidget(m_icon);
    icon->addStretch(1);
    body()->addLayout(icon);

    showPreference();
    connect(m_skinGroup, &QButtonGroup::idToggled, this, [this](int id, bool on) {
        if (!on)
            return;
        SkinPreference preference = m_skins.preference();
        preference.skin = static_cast<Skin>(id);
        choose(preference);
    });
    connect(m_modeGroup, &QButtonGroup::idToggled, this, [this](int id, bool on) {
        if (!on)
            return;
        SkinPreference preference = m_skins.preference();
        preference.appearance = static_cast<AppearanceMode>(id);
        choose(preference);
    });
    connect(m_icon, &QCheckBox::toggled, this, [this](bool on) {
        SkinPreference preference = m_skins.preference();
        preference.iconFollowsSkin = on;
        choose(preference);
    });
    connect(&m_skins, &SkinStore::preferenceChanged, this, [this] { showPreference(); });
}

void AppearanceCard::choose(const SkinPreference& preference) {
    m_skins.update(preference);
    showPreference();
}

void AppearanceCard::showPreference() {
    const SkinPreference& preference = m_skins.preference();
    const QSignalBlocker skinBlocker(m_skinGroup);
    const QSignalBlocker modeBlocker(m_modeGroup);
    const QSignalBlocker iconBlocker(m_icon);
    m_skinButtons.at(preference.skin)->setChecked(true);
    m_modeButtons.at(preference.appearance)->setChecked(true);
    m_icon->setChecked(preference.iconFollowsSkin);
    // The icon the store has just given the application, whichever it is.
    m_iconPreview->setPixmap(QApplication::windowIcon().pixmap(32, 32));
}

}  // namespace copperwick::app
