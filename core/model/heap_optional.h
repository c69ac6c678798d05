#pragma once

// An optional value kept on the heap, for the fields of a record that most
// records never have. A transaction carries a suggestion, a correction
// history, splits and bank extras only now and then; held inline they made
// every one of a long history's records hundreds of bytes larger, which cost
// memory and time on every reading of the file and every copy of a record.
// Reads like std::optional; copies are deep, so records stay values.

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace copperwick {

template <typename T>
class HeapOptional {
  public:
    HeapOptional() = default;
    HeapOptional(std::nullopt_t) {}  // NOLINT(google-explicit-constructor)
    HeapOptional(T value)            // NOLINT(google-explicit-constructor)
        : m_value(std::make_unique<T>(std::move(value))) {}
    HeapOptional(std::optional<T> value) {  // NOLINT(google-explicit-constructor)
        if (value)
            m_value = std::make_unique<T>(std::move(*value));
    }
    HeapOptional(const HeapOptional& other)
        : m_value(other.m_value ? std::make_unique<T>(*other.m_value) : nullptr) {}
    HeapOptional(HeapOptional&&) noexcept = default;
    HeapOptional& operator=(const HeapOptional& other) {
        if (this != &other)
            m_value = other.m_value ? std::make_unique<T>(*other.m_value) : nullptr;
        return *this;
    }
    HeapOptional& operator=(HeapOptional&&) noexcept = default;
    HeapOptional& operator=(std::nullopt_t) {
        m_value.reset();
        return *this;
    }
    // Anything the value can be made of, braces included, as with std::optional.
    template <typename U = T>
    requires(!std::is_same_v<std::remove_cvref_t<U>, HeapOptional> &&
             std::is_constructible_v<T, U&&>) HeapOptional&
    operator=(U&& value) {
        m_value = std::make_unique<T>(std::forward<U>(value));
        return *this;
    }
    ~HeapOptional() = default;

    [[nodiscard]] bool has_value() const { return m_value != nullptr; }
    explicit operator bool() const { return has_value(); }

    T& operator*() { return *m_value; }
    const T& operator*() const { return *m_value; }
    T* operator->() { return m_value.get(); }
    const T* operator->() const { return m_value.get(); }

    T& value() {
        if (!m_value)
            throw std::bad_optional_access();
        return *m_value;
    }
    const T& value() const {
        if (!m_value)
            throw std::bad_optional_access();
        return *m_value;
    }
    template <typename U>
    T value_or(U&& fallback) const {
        return m_value ? *m_value : static_cast<T>(std::forward<U>(fallback));
    }

    template <typename... Arguments>
    T& emplace(Arguments&&... arguments) {
        m_value = std::make_unique<T>(std::forward<Arguments>(arguments)...);
        return *m_value;
    }
    void reset() { m_value.reset(); }

    // For code that hands the value on as a plain optional.
    [[nodiscard]] std::optional<T> optional() const {
        return m_value ? std::optional<T>(*m_value) : std::nullopt;
    }

    friend bool operator==(const HeapOptional& a, const HeapOptional& b) {
        if (!a.m_value || !b.m_value)
            return !a.m_value && !b.m_value;
        return *a.m_value == *b.m_value;
    }
    friend bool operator==(const HeapOptional& a, std::nullopt_t) { return !a.m_value; }
    // Declared here so that std::optional's own comparison, which would take
    // this whole object for a value and call an empty one unequal to an empty
    // optional, is never chosen.
    friend bool operator==(const HeapOptional& a, const std::optional<T>& b) {
        if (!a.m_value || !b)
            return !a.m_value && !b;
        return *a.m_value == *b;
    }
    // Against a value: equal only when there is one and it is equal.
    template <typename U>
    requires(!std::is_same_v<U, HeapOptional> && !std::is_same_v<U, std::optional<T>> &&
             !std::is_same_v<U, std::nullopt_t> &&
             requires(const T& value, const U& other) { value == other; }) friend bool
    operator==(const HeapOptional& a, const U& b) {
        return a.m_value && *a.m_value == b;
    }

  private:
    std::unique_ptr<T> m_value;
};

}  // namespace copperwick
