#pragma once

#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

namespace Tessaline {

/// A long sequence of small entries that each have a measure (a length, a height, a count), in which an entry is found
/// by the sum of the measures before it, and in which replacing a few entries costs about the same at any length.
///
/// `Entry` has `Sum sum() const`; `Sum` is default-made as zero and has `+=` and `-=`. The entries are kept in pages of
/// at most `kPage` entries with the sum of each page, so a search walks the pages (2,000 for a million entries) and
/// then one page.
template <class Entry, class Sum>
class SummedList
{
public:
    static constexpr std::size_t kPage = 512;

    /// Where an entry is. Valid until the list changes.
    struct Place {
        std::size_t page = 0;
        std::size_t index = 0; // in the page
        Sum before{};          // of all entries before it
    };

    bool isEmpty() const { return m_count == 0; }
    qsizetype count() const { return m_count; }
    const Sum &total() const { return m_total; }

    void clear() { *this = SummedList(); }
    void reset(const std::vector<Entry> &entries)
    {
        clear();
        append(entries, m_pages);
        m_count = static_cast<qsizetype>(entries.size());
        for (const Page &page : m_pages)
            m_total += page.sum;
    }

    const Entry &at(const Place &place) const { return m_pages[place.page].entries[place.index]; }
    Place first() const { return {}; }
    /// Behind the last entry: a place to insert at, where nothing can be read.
    Place end() const
    {
        Place place;
        place.before = m_total;
        if (!m_pages.empty()) {
            place.page = m_pages.size() - 1;
            place.index = m_pages.back().entries.size();
        }
        return place;
    }
    Place last() const
    {
        Place place;
        place.before = m_total;
        place.page = m_pages.size() - 1;
        place.index = m_pages.back().entries.size() - 1;
        place.before -= at(place).sum();
        return place;
    }

    /// Steps to the neighbour; false, and no step, at the end.
    bool advance(Place &place) const
    {
        const std::vector<Entry> &entries = m_pages[place.page].entries;
        if (place.index + 1 == entries.size() && place.page + 1 == m_pages.size())
            return false;
        place.before += entries[place.index].sum();
        if (++place.index == entries.size()) {
            ++place.page;
            place.index = 0;
        }
        return true;
    }
    bool retreat(Place &place) const
    {
        if (place.index == 0 && place.page == 0)
            return false;
        if (place.index == 0)
            place.index = m_pages[--place.page].entries.size();
        --place.index;
        place.before -= at(place).sum();
        return true;
    }

    /// The first entry behind which `isPast(sum of all entries up to and with it)` holds, or the last entry if there is
    /// none. `isPast` must stay true once it is. The list must not be empty.
    template <class IsPast>
    Place find(IsPast isPast) const
    {
        Place place;
        for (; place.page + 1 < m_pages.size(); ++place.page) {
            Sum behind = place.before;
            behind += m_pages[place.page].sum;
            if (isPast(behind))
                break;
            place.before = behind;
        }
        const std::vector<Entry> &entries = m_pages[place.page].entries;
        for (; place.index + 1 < entries.size(); ++place.index) {
            Sum behind = place.before;
            behind += entries[place.index].sum();
            if (isPast(behind))
                break;
            place.before = behind;
        }
        return place;
    }

    /// Exchanges one entry.
    void set(const Place &place, const Entry &entry)
    {
        Page &page = m_pages[place.page];
        Entry &old = page.entries[place.index];
        page.sum -= old.sum();
        m_total -= old.sum();
        old = entry;
        page.sum += entry.sum();
        m_total += entry.sum();
    }

    /// Puts `fresh` in the place of `count` entries from `from` on; with a count of 0 before `from`. In an empty list
    /// `from` is `first()`.
    void replace(const Place &from, std::size_t count, const std::vector<Entry> &fresh)
    {
        // FAST PATH: as many entries as before are exchanged one by one.
        if (count == fresh.size()) {
            Place place = from;
            for (const Entry &entry : fresh) {
                const Sum before = place.before;
                set(place, entry);
                place.before = before;
                advance(place);
            }
            return;
        }
        if (m_pages.empty()) {
            reset(fresh);
            return;
        }

        // The pages that are touched are made anew. Small ones are joined with the next, so that deleting leaves no
        // long list of them.
        std::size_t lastPage = from.page;
        std::size_t covered = m_pages[lastPage].entries.size() - from.index;
        while (covered < count)
            covered += m_pages[++lastPage].entries.size();
        const std::vector<Entry> &head = m_pages[from.page].entries;
        const std::vector<Entry> &tail = m_pages[lastPage].entries;
        std::vector<Entry> around(head.begin(), head.begin() + static_cast<std::ptrdiff_t>(from.index));
        around.insert(around.end(), fresh.begin(), fresh.end());
        around.insert(around.end(), tail.end() - static_cast<std::ptrdiff_t>(covered - count), tail.end());
        while (around.size() < kPage / 4 && lastPage + 1 < m_pages.size()) {
            const std::vector<Entry> &next = m_pages[++lastPage].entries;
            around.insert(around.end(), next.begin(), next.end());
        }

        std::vector<Page> pages;
        append(around, pages);
        const auto begin = m_pages.begin() + static_cast<std::ptrdiff_t>(from.page);
        const auto end = m_pages.begin() + static_cast<std::ptrdiff_t>(lastPage) + 1;
        for (auto page = begin; page != end; ++page)
            m_total -= page->sum;
        for (const Page &page : pages)
            m_total += page.sum;
        m_count += static_cast<qsizetype>(fresh.size()) - static_cast<qsizetype>(count);
        m_pages.insert(m_pages.erase(begin, end), std::make_move_iterator(pages.begin()),
                       std::make_move_iterator(pages.end()));
    }

    /// Calls `change(entry)` for each entry, which may change its measure.
    template <class Change>
    void transform(Change change)
    {
        m_total = Sum();
        for (Page &page : m_pages) {
            page.sum = Sum();
            for (Entry &entry : page.entries) {
                change(entry);
                page.sum += entry.sum();
            }
            m_total += page.sum;
        }
    }

private:
    struct Page {
        std::vector<Entry> entries;
        Sum sum{};
    };

    /// Fills pages to three quarters, so that the next insertions find room.
    static void append(const std::vector<Entry> &entries, std::vector<Page> &pages)
    {
        constexpr std::size_t kFill = kPage * 3 / 4;
        for (std::size_t at = 0; at < entries.size(); at += kFill) {
            const auto begin = entries.begin() + static_cast<std::ptrdiff_t>(at);
            const auto end = entries.begin() + static_cast<std::ptrdiff_t>(std::min(at + kFill, entries.size()));
            Page &page = pages.emplace_back();
            page.entries.assign(begin, end);
            for (const Entry &entry : page.entries)
                page.sum += entry.sum();
        }
    }

    std::vector<Page> m_pages; // none is empty
    qsizetype m_count = 0;
    Sum m_total{};
};

} // namespace Tessaline
