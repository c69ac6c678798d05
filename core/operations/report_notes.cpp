#include "core/operations/report_notes.h"

#include <algorithm>

#include "core/operations/entry_error.h"

namespace copperwick {

namespace {

template <typename F>
void changeAccount(Ledger& ledger, LedgerDelta& delta, const Uuid& id, F&& edit) {
    for (std::size_t i = 0; i < ledger.accounts.size(); ++i) {
        if (ledger.accounts[i].id == id) {
            ledger.accounts.update(i, std::forward<F>(edit));
            delta.change(RecordKind::account, id);
            return;
        }
    }
}

bool hasAnswer(const Account& account) {
    return account.rarelyUsed || account.upToDateThrough || account.historyStartsOn;
}

}  // namespace

std::optional<std::vector<DataNote::Acknowledgement>> noteAnswers(
    const std::vector<DataNote>& notes, const std::optional<std::string>& noteID) {
    std::vector<DataNote::Acknowledgement> answers;
    for (const auto& note : notes) {
        if (!noteID) {
            if (note.acknowledgement)
                answers.push_back(*note.acknowledgement);
            continue;
        }
        if (note.id != *noteID)
            continue;
        if (!note.acknowledgement)
            throw EntryError(EntryError::Case::note, "The note \u201C" + note.id +
                                                         "\u201D can't be set aside; it goes "
                                                         "when its cause does.");
        return std::vector{*note.acknowledgement};
    }
    if (noteID)
        return std::nullopt;
    return answers;
}

LedgerDelta acknowledge(Ledger& ledger, const std::vector<DataNote::Acknowledgement>& answers) {
    LedgerDelta delta;
    for (const auto& answer : answers) {
        if (const auto* upToDate = std::get_if<DataNote::UpToDate>(&answer)) {
            changeAccount(ledger, delta, upToDate->accountID, [&](Account& account) {
                if (!account.upToDateThrough || *account.upToDateThrough < upToDate->through)
                    account.upToDateThrough = upToDate->through;
            });
        } else if (const auto* start = std::get_if<DataNote::HistoryStart>(&answer)) {
            changeAccount(ledger, delta, start->accountID,
                          [&](Account& account) { account.historyStartsOn = start->on; });
        } else if (const auto* rarely = std::get_if<DataNote::RarelyUsed>(&answer)) {
            changeAccount(ledger, delta, rarely->accountID,
                          [](Account& account) { account.rarelyUsed = true; });
        } else if (const auto* dismiss = std::get_if<DataNote::Dismiss>(&answer)) {
            const auto& dismissed = ledger.settings->dismissedNotes;
            if (std::find(dismissed.begin(), dismissed.end(), dismiss->key) == dismissed.end()) {
                ledger.settings.update([&](LedgerSettings& settings) {
                    settings.dismissedNotes.push_back(dismiss->key);
                });
                delta.change(RecordKind::settings, std::string(LedgerDelta::kSettingsID));
            }
        }
    }
    return delta;
}

LedgerDelta showAllReportNotes(Ledger& ledger) {
    LedgerDelta delta;
    for (std::size_t i = 0; i < ledger.accounts.size(); ++i) {
        if (!hasAnswer(ledger.accounts[i]))
            continue;
        ledger.accounts.update(i, [](Account& account) {
            account.rarelyUsed = false;
            account.upToDateThrough.reset();
            account.historyStartsOn.reset();
        });
        delta.change(RecordKind::account, ledger.accounts[i].id);
    }
    if (!ledger.settings->dismissedNotes.empty()) {
        ledger.settings.update([](LedgerSettings& settings) { settings.dismissedNotes.clear(); });
        delta.change(RecordKind::settings, std::string(LedgerDelta::kSettingsID));
    }
    return delta;
}

int64_t acknowledgedNoteCount(const Ledger& ledger) {
    const auto accounts = std::count_if(ledger.accounts.begin(), ledger.accounts.end(), hasAnswer);
    return static_cast<int64_t>(accounts) +
           static_cast<int64_t>(ledger.settings->dismissedNotes.size());
}

}  // namespace copperwick
