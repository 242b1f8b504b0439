// A map that forgets its oldest entries.
#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <utility>

namespace Appliance {

// Keeps at most `most` values, those that were put last.
template <typename Key, typename Value>
class Recent {
  public:
    explicit Recent(std::size_t most) : most_(most) {}

    // In place of what was there under this key.
    void put(const Key& key, Value value)
    {
        remove(key);
        order_.push_back(key);
        entries_.emplace(key, Entry{std::move(value), std::prev(order_.end())});
        if (entries_.size() > most_) {
            remove(Key(order_.front()));
        }
    }

    // Null where there is none. Good until the next put() or removal.
    Value* find(const Key& key)
    {
        const auto found = entries_.find(key);
        return found == entries_.end() ? nullptr : &found->second.value;
    }

    void remove(const Key& key)
    {
        const auto found = entries_.find(key);
        if (found != entries_.end()) {
            order_.erase(found->second.place);
            entries_.erase(found);
        }
    }

    // All keys from `first` on that fulfil `belongs`, which the keys after them do not.
    template <typename Belongs>
    void removeRange(const Key& first, const Belongs& belongs)
    {
        for (auto at = entries_.lower_bound(first); at != entries_.end() && belongs(at->first);) {
            order_.erase(at->second.place);
            at = entries_.erase(at);
        }
    }

  private:
    struct Entry {
        Value value;
        typename std::list<Key>::iterator place;
    };

    std::size_t most_;
    std::map<Key, Entry> entries_;
    std::list<Key> order_;  // the oldest first
};

}  // namespace Appliance
