// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Properties/PropertyMap.h"

#include <algorithm>

namespace ferrow {

// Out of line, because a value holds a map and a map holds values: neither is complete without the other.
PropertyMap::PropertyMap() = default;
PropertyMap::PropertyMap(std::initializer_list<Entry> entries) : entries_(entries) {}
PropertyMap::PropertyMap(const PropertyMap&) = default;
PropertyMap::PropertyMap(PropertyMap&&) noexcept = default;
PropertyMap& PropertyMap::operator=(const PropertyMap&) = default;
PropertyMap& PropertyMap::operator=(PropertyMap&&) noexcept = default;
PropertyMap::~PropertyMap() = default;

bool PropertyMap::isEmpty() const
{
    return entries_.empty();
}

const PropertyValue* PropertyMap::find(QStringView key) const
{
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [&](const auto& entry) { return entry.first == key; });
    return found == entries_.end() ? nullptr : &found->second;
}

void PropertyMap::set(const QString& key, PropertyValue value)
{
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [&](const auto& entry) { return entry.first == key; });
    if (found == entries_.end())
        entries_.emplace_back(key, std::move(value));
    else
        found->second = std::move(value);
}

const std::vector<PropertyMap::Entry>& PropertyMap::entries() const
{
    return entries_;
}

// Written out: a comparison that is defaulted through the cycle of the two types ends clang 14.
bool PropertyMap::operator==(const PropertyMap& other) const
{
    return entries_ == other.entries_;
}

bool PropertyValue::operator==(const PropertyValue& other) const
{
    return value == other.value;
}

} // namespace ferrow
