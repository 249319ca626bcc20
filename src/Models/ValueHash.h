// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/CodedEnum.h"

#include <QHash>
#include <QString>
#include <QUuid>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <vector>

namespace ferrow {

/// Hashes a value by its fields, in the order they are fed. A value type joins in with a function
/// `void feed(ValueHash&, const T&)` beside it, and with `template <> struct std::hash<T> : ValueHasher`.
class ValueHash {
public:
    void add(std::size_t hash) { hash_ ^= hash + 0x9e3779b97f4a7c15U + (hash_ << 6U) + (hash_ >> 2U); }
    [[nodiscard]] std::size_t result() const { return hash_; }

private:
    std::size_t hash_ = 0;
};

inline void feed(ValueHash& hash, bool value)
{
    hash.add(value ? 1 : 0);
}
inline void feed(ValueHash& hash, std::int64_t value)
{
    hash.add(qHash(qint64(value)));
}
/// Zeros of both signs are equal, so they hash alike.
inline void feed(ValueHash& hash, double value)
{
    hash.add(qHash(value == 0 ? 0.0 : value));
}
inline void feed(ValueHash& hash, const QString& value)
{
    hash.add(qHash(value));
}
inline void feed(ValueHash& hash, const QUuid& value)
{
    hash.add(qHash(value));
}

/// Enumerations hash by their raw value: the hash does not depend on the order of the cases.
template <typename Enum>
requires std::is_enum_v<Enum>
void feed(ValueHash& hash, Enum value)
{
    feed(hash, rawValue(value));
}

template <typename T>
void feed(ValueHash& hash, const std::optional<T>& value)
{
    feed(hash, value.has_value());
    if (value)
        feed(hash, *value);
}

template <typename T>
void feed(ValueHash& hash, const std::vector<T>& values)
{
    feed(hash, std::int64_t(values.size()));
    for (const T& value : values)
        feed(hash, value);
}

struct ValueHasher {
    template <typename T>
    std::size_t operator()(const T& value) const noexcept
    {
        ValueHash hash;
        feed(hash, value);
        return hash.result();
    }
};

} // namespace ferrow
