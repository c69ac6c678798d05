#pragma once

// "Choose columns": the sheet where a person tells Copperwick which column
// of an unrecognised file holds what. It starts from core's preselection,
// says as the person chooses how many rows the draft layout reads (read in
// the background, so a long file never stops the window), and is saved only
// when complete, as a taught layout through the import model, which reads
// the file again with it.
//
// Opened by the page for the import model's mappingFileID; Escape or
// "Cancel" closes it without a change. Main thread only.

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/sheet_dialog.h"
#include "core/import/layout_teaching.h"
#include "runtime/import_model.h"
#include "runtime/main_queue.h"

namespace copperwick::app {

class ColumnMappingSheet : public SheetDialog {
    Q_OBJECT

  public:
    enum class Column {
        date,
        description,
        amount,
        moneyOut,
        moneyIn,
        postedDate,
        status,
        cardholder,
        cardNumber,
    };
    static constexpr std::size_t kColumnCount = 9;

    ColumnMappingSheet(RuntimeBridge& bridge, const ImportFile& file, QWidget* parent = nullptr);
    ~ColumnMappingSheet() override;

    [[nodiscard]] const Uuid& fileID() const { return m_fileID; }
    // The layout as the form now stands.
    [[nodiscard]] LayoutDraft draft() const;

    [[nodiscard]] QLineEdit* nameField() const { return m_name; }
    [[nodiscard]] QComboBox* typePicker() const { return m_type; }
    [[nodiscard]] QComboBox* columnPicker(Column column) const {
        return m_columns[static_cast<std::size_t>(column)];
    }
    [[nodiscard]] QCheckBox* splitBox() const { return m_split; }
    [[nodiscard]] QComboBox* signPicker() const { return m_sign; }
    [[nodiscard]] QLabel* previewLabel() const { return m_preview; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    [[nodiscard]] QPushButton* cancelButton() const { return m_cancel; }

  private:
    struct Preview {
        int rows = 0;
        int issues = 0;
        std::vector<std::string> firstRows;
    };

    QComboBox* makeColumnPicker(const QString& name, const QString& empty);
    void showDraft(const LayoutDraft& draft);
    void formChanged();
    void save();

    RuntimeBridge& m_bridge;
    Uuid m_fileID;
    std::string m_fileName;
    std::shared_ptr<const std::string> m_data;
    bool m_flipSigns = false;
    std::vector<std::string> m_headers;
    // The columns the pickers offer.
    std::vector<std::string> m_offered;
    // The starting draft, for what the form keeps without showing it.
    LayoutDraft m_kept;
    QLineEdit* m_name;
    QComboBox* m_type;
    std::array<QComboBox*, kColumnCount> m_columns{};
    QCheckBox* m_split;
    QComboBox* m_sign;
    QFormLayout* m_form;
    QLabel* m_preview;
    QLabel* m_previewRows;
    QPushButton* m_save;
    QPushButton* m_cancel;
    // Each change reads the file again; only the newest reading is shown.
    uint64_t m_previewGeneration = 0;
    std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace copperwick::app
