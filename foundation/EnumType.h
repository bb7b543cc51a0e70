#pragma once
// Bounded enumerations: a value that knows its member count, falls back to its default on any
// out-of-range assignment, and either wraps or saturates when stepped past an end.

#include <mutex>
#include <sstream>
#include <string>

template <class E, int N, bool Wrap>
class CEnumType {
    static_assert(N > 0, "an enumeration has members");

public:
    explicit CEnumType(E defaultValue)
        : m_default(static_cast<int>(defaultValue)), m_value(static_cast<int>(defaultValue)) {}
    virtual ~CEnumType() = default;

    static constexpr int Count = N;
    static constexpr bool Wraps = Wrap;

    // Signed on purpose: only values above the last member are invalid; saturating Next lands
    // on N to tell a caller it ran out of members.
    virtual bool IsValid() const { return m_value <= N - 1; }
    virtual E Get() const { return static_cast<E>(m_value); }
    virtual int GetValue() const { return m_value; }
    virtual E Set(int value) {
        m_value = static_cast<unsigned>(value) > static_cast<unsigned>(N - 1) ? m_default : value;
        return static_cast<E>(m_value);
    }
    virtual void Assign(int value) { CEnumType::Set(value); }
    virtual E Next() {
        const int v = m_value + 1;
        m_value = v >= N ? (Wrap ? 0 : N) : v;
        return static_cast<E>(m_value);
    }
    virtual E Previous() {
        const int v = m_value - 1;
        m_value = v < 0 ? (Wrap ? N - 1 : 0) : v;
        return static_cast<E>(m_value);
    }
    virtual std::string ToText() const {
        std::ostringstream out;
        out << m_value;
        return out.str();
    }
    virtual bool Is(int value) const { return m_value == value; }
    E GetDefault() const { return static_cast<E>(m_default); }

private:
    int m_default;
    int m_value;
};

// The same, safe for a value that the worker thread and the GUI thread both read and write.
template <class E, int N, bool Wrap>
class CSafeEnumType : public CEnumType<E, N, Wrap> {
    using Base = CEnumType<E, N, Wrap>;

public:
    explicit CSafeEnumType(E defaultValue) : Base(defaultValue) {}

    bool IsValid() const override {
        std::lock_guard<std::mutex> l(m_mutex);
        return Base::IsValid();
    }
    E Get() const override {
        std::lock_guard<std::mutex> l(m_mutex);
        return Base::Get();
    }
    int GetValue() const override {
        std::lock_guard<std::mutex> l(m_mutex);
        return Base::GetValue();
    }
    E Set(int value) override {
        std::lock_guard<std::mutex> l(m_mutex);
        return Base::Set(value);
    }
    void Assign(int value) override {
        std::lock_guard<std::mutex> l(m_mutex);
        Base::Assign(value);
    }
    E Next() override {
        std::lock_guard<std::mutex> l(m_mutex);
        return Base::Next();
    }
    E Previous() override {
        std::lock_guard<std::mutex> l(m_mutex);
        return Base::Previous();
    }
    std::string ToText() const override {
        std::lock_guard<std::mutex> l(m_mutex);
        return Base::ToText();
    }
    bool Is(int value) const override {
        std::lock_guard<std::mutex> l(m_mutex);
        return Base::Is(value);
    }

private:
    mutable std::mutex m_mutex;
};
