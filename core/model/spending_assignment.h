#pragma once

// Whose spending a transaction is: one person of the household, the household
// as a whole, or nobody yet. Kept on transactions (chosen or inherited) and on
// accounts (per card).

#include <functional>

#include "core/model/uuid.h"

namespace copperwick {

class SpendingAssignment {
  public:
    enum class Case {
        person,
        shared,
        unassigned,
    };

    // Nobody, until a person or the household is chosen.
    SpendingAssignment() = default;

    [[nodiscard]] static SpendingAssignment person(Uuid personID) {
        return {Case::person, personID};
    }
    [[nodiscard]] static SpendingAssignment shared() { return {Case::shared, Uuid()}; }
    [[nodiscard]] static SpendingAssignment unassigned() { return {Case::unassigned, Uuid()}; }

    [[nodiscard]] Case kind() const { return m_case; }
    [[nodiscard]] bool isPerson() const { return m_case == Case::person; }
    // The person's id; the nil UUID unless isPerson().
    [[nodiscard]] Uuid personID() const { return m_personID; }

    friend bool operator==(const SpendingAssignment&, const SpendingAssignment&) = default;

  private:
    SpendingAssignment(Case c, Uuid personID) : m_case(c), m_personID(personID) {}

    Case m_case = Case::unassigned;
    Uuid m_personID;
};

}  // namespace copperwick

template <>
struct std::hash<copperwick::SpendingAssignment> {
    std::size_t operator()(const copperwick::SpendingAssignment& a) const noexcept {
        return std::hash<copperwick::Uuid>{}(a.personID()) ^ static_cast<std::size_t>(a.kind());
    }
};
