#include "app/rules/keyed_list_model.h"

#include <algorithm>
#include <random>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>

#include <gtest/gtest.h>

namespace copperwick::app {
namespace {

// The smallest keyed model: a row shows its key.
class Keys : public KeyedListModel {
  public:
    using KeyedListModel::KeyedListModel;
    using KeyedListModel::moveKey;

    void show(const std::vector<std::string>& keys, const std::set<std::string>& touched = {}) {
        syncKeys(keys, touched);
    }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid() || role != Qt::DisplayRole)
            return {};
        return QString::fromStdString(keyAt(index.row()));
    }
};

std::vector<std::string> shown(const Keys& model) {
    std::vector<std::string> keys;
    for (int row = 0; row < model.rowCount(); ++row)
        keys.push_back(model.index(row, 0).data().toString().toStdString());
    return keys;
}

// Removals, insertions and new orders at once, with Qt's own checker watching
// every signal; a view's hold on a row must follow that row's key.
TEST(KeyedListModel, ReachesAnyNewListWithSignalsAViewCanFollow) {
    Keys model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    std::mt19937 random(20260302);
    std::vector<std::string> pool;
    for (char letter = 'a'; letter <= 'p'; ++letter)
        pool.emplace_back(1, letter);

    for (int round = 0; round < 300; ++round) {
        std::vector<std::string> next;
        for (const auto& key : pool) {
            if (random() % 3 != 0)
                next.push_back(key);
        }
        // Mostly the same order with a few swaps, sometimes a shuffle.
        if (round % 7 == 0)
            std::shuffle(next.begin(), next.end(), random);
        else if (next.size() > 1 && random() % 2 == 0)
            std::swap(next[random() % next.size()], next[random() % next.size()]);

        std::vector<QPersistentModelIndex> held;
        std::vector<std::string> heldKeys;
        for (int row = 0; row < model.rowCount(); ++row) {
            held.emplace_back(model.index(row, 0));
            heldKeys.push_back(model.keyAt(row));
        }
        model.show(next);
        ASSERT_EQ(shown(model), next) << "round " << round;
        for (std::size_t i = 0; i < held.size(); ++i) {
            const bool stays = std::find(next.begin(), next.end(), heldKeys[i]) != next.end();
            ASSERT_EQ(held[i].isValid(), stays) << heldKeys[i] << " in round " << round;
            if (stays) {
                ASSERT_EQ(model.keyAt(held[i].row()), heldKeys[i]) << "round " << round;
            }
        }
    }
}

TEST(KeyedListModel, RedrawsOnlyTheTouchedRowsThatStay) {
    Keys model;
    model.show({"a", "b", "c"});
    std::vector<int> redrawn;
    QObject::connect(&model, &QAbstractItemModel::dataChanged,
                     [&](const QModelIndex& from, const QModelIndex& to) {
                         for (int row = from.row(); row <= to.row(); ++row)
                             redrawn.push_back(row);
                     });
    // "d" is new and "a" gone: neither is redrawn, "c" is.
    model.show({"b", "c", "d"}, {"a", "c", "d"});
    EXPECT_EQ(redrawn, std::vector<int>{1});
}

TEST(KeyedListModel, MovesOneRowAsAViewDropsIt) {
    Keys model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.show({"a", "b", "c", "d"});
    QPersistentModelIndex held(model.index(0, 0));
    EXPECT_TRUE(model.moveKey(0, 3));
    EXPECT_EQ(shown(model), (std::vector<std::string>{"b", "c", "a", "d"}));
    EXPECT_EQ(held.row(), 2);
    EXPECT_TRUE(model.moveKey(3, 0));
    EXPECT_EQ(shown(model), (std::vector<std::string>{"d", "b", "c", "a"}));
    EXPECT_TRUE(model.moveKey(1, 4));
    EXPECT_EQ(shown(model), (std::vector<std::string>{"d", "c", "a", "b"}));
    // Onto itself or just behind itself isn't a move.
    EXPECT_FALSE(model.moveKey(1, 1));
    EXPECT_FALSE(model.moveKey(1, 2));
    EXPECT_FALSE(model.moveKey(0, 5));
}

}  // namespace
}  // namespace copperwick::app
