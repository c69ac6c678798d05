#pragma once

// The merchants Copperwick knows, by name, one row each, with what the
// Merchants list shows of them: how many transactions they file, what they
// always file as and how many bank texts they recognize, in core's words,
// and the badge they wear. Refreshed after every save that touched
// merchants, transactions or categories; only rows that changed are redrawn.
//
// MerchantSearchProxy narrows the rows to the merchants that core's search
// finds for the typed text.
//
// Main thread only.

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <QSortFilterProxyModel>

#include "app/rules/keyed_list_model.h"
#include "app/rules/row_roles.h"
#include "core/model/ledger.h"
#include "core/presentation/merchant_icons.h"

namespace copperwick::app {

class MerchantListModel : public KeyedListModel {
    Q_OBJECT

  public:
    static constexpr int MerchantIDRole = kRecordIDRole;
    enum Role {
        // "12 transactions"
        CountRole = Qt::UserRole + 10,
        // "always Dining", "always a transfer"; empty for no default
        FilingRole,
        // "recognizes 2 bank texts"; empty when it recognizes none
        RecognizedRole,
        // The badge's MerchantIconDescriptor.
        BadgeRole,
    };

    struct Row {
        Uuid id;
        QString name;
        std::size_t count = 0;
        QString filing;
        QString recognized;
        std::optional<std::string> categoryName;
        std::optional<TransactionKind> kind;

        friend bool operator==(const Row&, const Row&) = default;
    };
    using Rows = std::vector<std::pair<std::string, Row>>;

    explicit MerchantListModel(QObject* parent = nullptr);

    // The rows of `ledger`'s merchants. Counting them is a pass over every
    // line, so a long history reads them beside the window; safe on any
    // thread.
    [[nodiscard]] static Rows rowsOf(const Ledger& ledger);
    void install(Rows rows) { installRows(m_rows, std::move(rows)); }
    void refresh(const Ledger& ledger) { install(rowsOf(ledger)); }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    std::unordered_map<std::string, Row> m_rows;
};

class MerchantSearchProxy : public QSortFilterProxyModel {
    Q_OBJECT

  public:
    explicit MerchantSearchProxy(QObject* parent = nullptr);

    // Finds the merchants of `ledger` for `search` again; an empty search
    // lets every merchant through.
    void setSearch(const Ledger& ledger, const QString& search);
    // The same search on a changed ledger, so that a renamed merchant is
    // found or dropped.
    void refresh(const Ledger& ledger);
    [[nodiscard]] const QString& search() const { return m_search; }

  protected:
    [[nodiscard]] bool filterAcceptsRow(int sourceRow,
                                        const QModelIndex& sourceParent) const override;

  private:
    QString m_search;
    bool m_everyone = true;
    std::unordered_set<std::string> m_found;
};

}  // namespace copperwick::app

Q_DECLARE_METATYPE(copperwick::MerchantIconDescriptor)
