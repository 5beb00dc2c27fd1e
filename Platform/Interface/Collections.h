#pragma once

#include "Platform/Interface/HresultError.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Platform {

/// An ordered read-only list, by default empty. Copies share the elements, which never change. Any thread.
template <typename T> class VectorView {
public:
    VectorView() : VectorView(std::vector<T>{}) {}

    /// Takes the elements over, in their order. Not explicit: a function that returns a list may end in a vector.
    VectorView(std::vector<T> items) : _items(std::make_shared<const std::vector<T>>(std::move(items))) {}

    /// Copies the elements, for lists written out in braces.
    VectorView(std::initializer_list<T> items) : VectorView(std::vector<T>(items)) {}

    /// The number of elements.
    std::uint32_t Size() const { return static_cast<std::uint32_t>(_items->size()); }

    /// The element at that position, from 0; lives as long as a copy of the list. Raises outOfBounds at or past the
    /// end.
    const T& GetAt(std::uint32_t index) const {
        if (index >= _items->size())
            throw winrt::hresult_out_of_bounds(u"The list has no element at that position.");
        return (*_items)[index];
    }

    /// Forward, in the order of the list; as iterators of a vector, good as long as a copy of the list lives.
    auto begin() const { return _items->begin(); }

    /// Behind the last element.
    auto end() const { return _items->end(); }

private:
    std::shared_ptr<const std::vector<T>> _items;
};

/// A read-only map from text that iterates in the order in which the platform filled it, by default empty. Keys are
/// compared unit by unit; of entries with the same key the first is found. Copies share the entries, which never
/// change. Any thread.
template <typename T> class MapView {
public:
    /// The key, UTF-16, and its value: what iterating gives.
    using Entry = std::pair<std::u16string, T>;

    MapView() : MapView(std::vector<Entry>{}) {}

    /// Takes the entries over, in their order; a key may occur more than once.
    MapView(std::vector<Entry> entries) : _entries(std::make_shared<const std::vector<Entry>>(std::move(entries))) {}

    /// Copies the entries, for maps written out in braces.
    MapView(std::initializer_list<Entry> entries) : MapView(std::vector<Entry>(entries)) {}

    /// The number of entries; each of several with the same key counts.
    std::uint32_t Size() const { return static_cast<std::uint32_t>(_entries->size()); }

    /// Whether Lookup of the key finds a value. Takes time in proportion to Size, as Lookup does.
    bool HasKey(const std::u16string& key) const { return find(key) != nullptr; }

    /// The value under the key; lives as long as a copy of the map. Raises outOfBounds for a key that the map does not
    /// have.
    const T& Lookup(const std::u16string& key) const {
        const T* value = find(key);
        if (value == nullptr)
            throw winrt::hresult_out_of_bounds(u"The map has no entry under that key: " + key);
        return *value;
    }

    /// Forward, in the order of filling; as iterators of a vector, good as long as a copy of the map lives.
    auto begin() const { return _entries->begin(); }

    /// Behind the last entry.
    auto end() const { return _entries->end(); }

private:
    const T* find(const std::u16string& key) const {
        for (const Entry& entry : *_entries)
            if (entry.first == key)
                return &entry.second;
        return nullptr;
    }

    std::shared_ptr<const std::vector<Entry>> _entries;
};

} // namespace Platform
