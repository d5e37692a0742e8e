#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

/// Pointers by id, in the order of the ids: what a std::map from id to pointer would hold, found
/// without a search. Ids count up from 0 and are not used again, so that a page of them whose last
/// one has gone is given back. Does not own what it points to.
template <class T>
class CIdTable {
  public:
    using value_type = std::pair<int, T*>;

    class const_iterator {
      public:
        const value_type& operator*() const noexcept { return m_value; }
        const value_type* operator->() const noexcept { return &m_value; }
        const_iterator& operator++() noexcept {
            MoveTo(static_cast<std::size_t>(m_value.first) + 1);
            return *this;
        }
        bool operator==(const const_iterator& other) const noexcept {
            return m_value.first == other.m_value.first;
        }

      private:
        friend class CIdTable;

        explicit const_iterator(const CIdTable& table) noexcept : m_table(&table) {}
        const_iterator(const CIdTable& table, std::size_t index) noexcept : m_table(&table) {
            MoveTo(index);
        }
        /// To the first entry from there on.
        void MoveTo(std::size_t index) noexcept {
            for (; index < m_table->m_pages.size() * kPage; ++index) {
                if (m_table->m_pages[index / kPage] == nullptr) {
                    index += kPage - 1 - index % kPage;
                } else if (T* const entry = m_table->At(index)) {
                    m_value = {static_cast<int>(index), entry};
                    return;
                }
            }
            m_value = kEnd;
        }

        static constexpr value_type kEnd{-1, nullptr};
        const CIdTable* m_table;
        value_type m_value = kEnd;
    };

    bool empty() const noexcept { return m_size == 0; }
    std::size_t size() const noexcept { return m_size; }
    const_iterator begin() const noexcept { return const_iterator(*this, 0); }
    const_iterator end() const noexcept { return const_iterator(*this); }

    /// Null for none.
    T* Find(int id) const noexcept {
        const auto index = static_cast<std::size_t>(id);
        return id < 0 || index / kPage >= m_pages.size() || m_pages[index / kPage] == nullptr
                   ? nullptr
                   : At(index);
    }
    const_iterator find(int id) const noexcept {
        return Find(id) == nullptr ? end() : const_iterator(*this, static_cast<std::size_t>(id));
    }
    /// Throws std::out_of_range if there is none.
    T* at(int id) const {
        T* const entry = Find(id);
        return entry != nullptr ? entry : throw std::out_of_range("no such id");
    }
    /// Of an id that is not in yet and not below 0. May throw std::bad_alloc, and then nothing has
    /// changed.
    void emplace(int id, T* entry) {
        const auto index = static_cast<std::size_t>(id);
        if (index / kPage >= m_pages.size()) {
            m_pages.resize(index / kPage + 1);
        }
        std::unique_ptr<Page>& page = m_pages[index / kPage];
        if (page == nullptr) {
            page = std::make_unique<Page>();
        }
        page->entries[index % kPage] = entry;
        ++page->count;
        ++m_size;
    }
    /// No effect if there is none.
    void erase(int id) noexcept {
        if (Find(id) == nullptr) {
            return;
        }
        const auto index = static_cast<std::size_t>(id);
        std::unique_ptr<Page>& page = m_pages[index / kPage];
        page->entries[index % kPage] = nullptr;
        if (--page->count == 0) {
            page.reset();
        }
        if (--m_size == 0) {
            std::vector<std::unique_ptr<Page>>().swap(m_pages);
        }
    }

  private:
    static constexpr std::size_t kPage = 256;

    struct Page {
        std::array<T*, kPage> entries{};
        std::size_t count = 0;
    };

    /// On a page that is there.
    T* At(std::size_t index) const noexcept {
        return m_pages[index / kPage]->entries[index % kPage];
    }

    std::vector<std::unique_ptr<Page>> m_pages;
    std::size_t m_size = 0;
};
