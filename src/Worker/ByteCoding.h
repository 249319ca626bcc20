// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/EnumCases.h"

#include <QString>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

/// Values as bytes between processes of one machine: the machine's own byte order, no padding.
namespace ferrow::Worker {

template <typename T>
concept PlainNumber = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

class ByteWriter {
public:
    template <PlainNumber T>
    void number(T value)
    {
        raw(std::as_bytes(std::span(&value, 1)));
    }
    void flag(bool value) { number(std::uint8_t(value)); }
    template <typename Enum>
    void enumerator(Enum value)
    {
        number(std::uint8_t(value));
    }
    /// At most `limit` UTF-16 units of it.
    void text(QStringView text, qsizetype limit)
    {
        const QStringView kept = text.first(std::min(text.size(), limit));
        number(std::uint32_t(kept.size()));
        raw(std::as_bytes(std::span(kept.utf16(), std::size_t(kept.size()))));
    }
    void raw(std::span<const std::byte> bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    /// Room for `length` bytes, to be filled before anything else is written.
    [[nodiscard]] std::byte* room(std::size_t length)
    {
        bytes_.resize(bytes_.size() + length);
        return bytes_.data() + bytes_.size() - length;
    }

    [[nodiscard]] std::vector<std::byte>& bytes() { return bytes_; }

private:
    std::vector<std::byte> bytes_;
};

/// Reads back what a ByteWriter wrote, or what somebody claims that one wrote: everything is checked, and after the
/// first thing that does not fit all further reads give zero and isWhole() false.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::byte> bytes) : rest_(bytes) {}

    template <PlainNumber T>
    [[nodiscard]] T number()
    {
        T value{};
        const auto bytes = raw(sizeof value);
        if (!bytes.empty())
            std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }
    /// A number from `least` to `most`; `least` and a failure for any other.
    template <PlainNumber T>
    [[nodiscard]] T number(T least, T most)
    {
        const T value = number<T>();
        if (value >= least && value <= most) // Not a number is neither.
            return value;
        fail();
        return least;
    }
    [[nodiscard]] bool flag() { return number<std::uint8_t>(0, 1) == 1; }
    /// One of the enumeration's cases, which count from 0.
    template <typename Enum>
    [[nodiscard]] Enum enumerator()
    {
        return Enum(number<std::uint8_t>(0, std::uint8_t(lastEnumerator<Enum{}>())));
    }
    [[nodiscard]] QString text(qsizetype limit)
    {
        const auto units = number<std::uint32_t>(0, std::uint32_t(limit));
        const auto bytes = raw(std::size_t(units) * 2);
        if (bytes.empty())
            return {};
        QString text(qsizetype(bytes.size() / 2), Qt::Uninitialized);
        std::memcpy(text.data(), bytes.data(), bytes.size());
        return text;
    }
    /// Empty when fewer are left.
    [[nodiscard]] std::span<const std::byte> raw(std::size_t length)
    {
        if (length > rest_.size()) {
            fail();
            return {};
        }
        const auto bytes = rest_.first(length);
        rest_ = rest_.subspan(length);
        return bytes;
    }
    void fail()
    {
        failed_ = true;
        rest_ = {};
    }

    /// Everything read so far was there and in range.
    [[nodiscard]] bool isSound() const { return !failed_; }
    /// And nothing is left.
    [[nodiscard]] bool isWhole() const { return !failed_ && rest_.empty(); }

private:
    std::span<const std::byte> rest_;
    bool failed_ = false;
};

} // namespace ferrow::Worker
