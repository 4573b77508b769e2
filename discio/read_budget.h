// Limits the cost of reading one disc. A disc can claim far more than it holds: sparse files, names and extents that
// share bytes, tables that overlap. Real discs need less than a tenth of any bound. A bound that is reached fails the
// whole disc, so it never changes what is read of a disc. The failure's message names the bound, not a file.
#pragma once

#include "discio/error_text.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace discio {

class ReadBudget {
public:
    enum class Bound : std::size_t {
        NavigationBytes,  // bytes of the navigation files
        FileSystemBytes,  // bytes of an image's directories, allocation descriptors and volume descriptors
        Pieces,           // extents of the files of an image, beyond the first of each
        Streams,          // of the clips and of the playlists' stream tables; a shared table counts once
        LookUps,          // steps of the searches for entry points (bdmeta::kEpStepCost)
        TitleRows,        // titles and their distinct streams, each a row for the views
    };

    // Takes `amount` from what is left of the bound. Returns false if less is left; then the bound is reached, and
    // every later call returns false.
    [[nodiscard]] bool spend(Bound bound, std::uint64_t amount)
    {
        Allowance& allowance = of(bound);
        if (m_reached == nullptr && amount > allowance.left) { m_reached = allowance.message; }
        if (m_reached != nullptr) { return false; }
        allowance.left -= amount;
        return true;
    }

    // Lowers what is left of a bound to `left` and sets its message; does nothing if less is left.
    void lower(Bound bound, std::uint64_t left, const char* message)
    {
        if (left < of(bound).left) { of(bound) = {left, message}; }
    }

    // Lowers the bound of navigation bytes to the image's size: its files can share bytes.
    void holdToImage(std::uint64_t imageSizeBytes)
    {
        lower(Bound::NavigationBytes, imageSizeBytes,
              MESSAGE_NOOP("Messages", "the navigation files are larger than the image that holds them"));
    }

    [[nodiscard]] std::uint64_t left(Bound bound) const
    {
        return m_allowances.at(static_cast<std::size_t>(bound)).left;
    }

    // Returns the message of the bound that was reached, or null.
    [[nodiscard]] const char* reached() const { return m_reached; }

private:
    struct Allowance {
        std::uint64_t left;
        const char* message;
    };

    Allowance& of(Bound bound) { return m_allowances.at(static_cast<std::size_t>(bound)); }

    // In the order of Bound.
    std::array<Allowance, 6> m_allowances = {{
        {512ULL << 20U, MESSAGE_NOOP("Messages", "the navigation files are larger than 512 MiB")},
        {32ULL << 20U, MESSAGE_NOOP("Messages", "the directories and file entries are larger than 32 MiB")},
        {262'144, MESSAGE_NOOP("Messages", "the files are in more than 262,144 pieces")},
        {2'000'000, MESSAGE_NOOP("Messages", "the playlists and clips have more than 2,000,000 streams")},
        {1'000'000'000,
         MESSAGE_NOOP("Messages", "the searches for entry points take more than 1,000,000,000 steps")},
        {250'000, MESSAGE_NOOP("Messages", "the disc has more than 250,000 titles and streams to show")},
    }};
    const char* m_reached = nullptr;
};

}  // namespace discio
