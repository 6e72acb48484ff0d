// Items as people name them: by ID, by name, by pattern, by path.
#include "tools/host/model/selection.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "tools/host/model/item_data.h"
#include "tools/host/model/name_pattern.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/nearest.h"
#include "tools/host/system/typed_number.h"

namespace kova_host {
namespace {

constexpr uint32_t kMostInstances = 16;  // of absent families, for telling that they are absent

std::vector<Item> matching(const std::vector<Item>& items, const std::string& text) {
  const bool path = text.find('/') != std::string::npos;
  std::vector<Item> result;
  std::copy_if(items.begin(), items.end(), std::back_inserter(result), [&](const Item& item) {
    return !item.name.empty() &&
           (matches_pattern(text, item.name) || (path && matches_pattern(text, path_of(item))));
  });
  return distinct(result);
}

template <typename Text>
std::vector<std::string> texts_of(const std::vector<Item>& items, Text text) {
  std::vector<std::string> result;
  std::transform(items.begin(), items.end(), std::back_inserter(result), text);
  result.erase(std::unique(result.begin(), result.end()), result.end());
  return result;
}

const Item* with_id(const std::vector<Item>& items, uint32_t id) {
  const auto match =
      std::find_if(items.begin(), items.end(), [id](const Item& item) { return item.id == id; });
  return match == items.end() ? nullptr : &*match;
}

// "'a' is an item of PoE, and this machine has none such"; "" if no family has such an item.
std::string absent_family_of(const std::string& text) {
  static const std::vector<std::vector<Item>> items_of_families = [] {
    std::vector<std::vector<Item>> result;
    for (const FamilyData& family : item_data()) {
      result.push_back(family.items(kMostInstances));
    }
    return result;
  }();
  for (size_t i = 0; i < items_of_families.size(); ++i) {
    if (!matching(items_of_families[i], text).empty()) {
      return fmt::format("'{}' is an item of {}, and this machine has none such", text,
                         item_data()[i].name);
    }
  }
  return "";
}

// "PIC/*" for the name of a family, "PIC/Settings/*" for that of a package, alone or behind its
// family's; "" for any other text.
std::string pattern_for_all_of(const std::vector<Item>& items, const std::string& text) {
  for (const Item& item : items) {
    const std::string package = item.family + '/' + item.package;
    if (same_word(text, item.family)) {
      return item.family + "/*";
    }
    if (same_word(text, item.package) || same_word(text, package)) {
      return package + "/*";
    }
  }
  return "";
}

[[noreturn]] void refuse(const std::vector<Item>& items, const std::string& text) {
  const auto hexadecimal = parse_item_id("0x" + text);
  if (hexadecimal && with_id(items, *hexadecimal) != nullptr) {
    throw HostError(Fault::usage, fmt::format("no item '{}': was 0x{} meant?", text, text));
  }
  if (const std::string pattern = pattern_for_all_of(items, text); !pattern.empty()) {
    throw HostError(Fault::usage,
                    fmt::format("no item '{}': '{}' names all of its items", text, pattern));
  }
  if (const std::string absent = absent_family_of(text); !absent.empty()) {
    throw HostError(Fault::usage, absent);
  }
  if (text.find('[') != std::string::npos) {
    throw HostError(Fault::usage,
                    fmt::format("no item '{}': * and ? are wildcards, brackets are not", text));
  }
  const bool path = text.find('/') != std::string::npos;
  const auto names = texts_of(items, [path](const Item& i) { return path ? path_of(i) : i.name; });
  throw HostError(Fault::usage, fmt::format("no item '{}'{}", text, suggestion(text, names)));
}

// Readings and factory defaults may be called as a setting is: the plain name means that one.
std::vector<Item> named_or_setting(const std::vector<Item>& items, const std::string& text) {
  std::vector<Item> named = named_items(items, text);
  const auto is_meant = [&text](const Item& item) {
    return item.facts.factory_default && same_word(item.name, text);
  };
  const auto setting = std::find_if(named.begin(), named.end(), is_meant);
  if (setting != named.end() && std::count_if(named.begin(), named.end(), is_meant) == 1) {
    return {*setting};
  }
  return named;
}

}  // namespace

std::vector<Item> distinct(const std::vector<Item>& items) {
  std::vector<Item> result;
  std::set<uint32_t> seen;
  std::copy_if(items.begin(), items.end(), std::back_inserter(result),
               [&seen](const Item& item) { return seen.insert(item.id).second; });
  return result;
}

std::vector<Item> named_items(const std::vector<Item>& items, const std::string& text) {
  if (text.size() > kLongestItemText) {
    throw HostError(Fault::usage, fmt::format("an item's name has at most {} bytes, not {}",
                                              kLongestItemText, text.size()));
  }
  if (const auto id = parse_item_id(text)) {
    if (const Item* item = with_id(items, *id)) {
      return {*item};
    }
    // Digits alone are a decimal number, but an ID without its 0x looks the same.
    const auto hexadecimal = parse_item_id("0x" + text);
    if (hexadecimal && with_id(items, *hexadecimal) != nullptr) {
      refuse(items, text);
    }
    Item unlisted;
    unlisted.id = *id;
    return {unlisted};
  }
  std::vector<Item> result = matching(items, text);
  if (result.empty()) {
    refuse(items, text);
  }
  return result;
}

std::vector<Item> family_items(const std::vector<Item>& items, const std::string& family) {
  std::vector<Item> result;
  std::copy_if(items.begin(), items.end(), std::back_inserter(result),
               [&family](const Item& item) { return same_word(item.family, family); });
  if (!result.empty()) {
    return result;
  }
  const auto present = texts_of(items, [](const Item& item) { return item.family; });
  for (const FamilyData& known : item_data()) {
    if (same_word(known.name, family)) {
      throw HostError(Fault::usage, fmt::format("no family {} on this machine, only: {}",
                                                known.name, fmt::join(present, ", ")));
    }
  }
  const std::string meant = suggestion(family, present);
  throw HostError(Fault::usage,
                  fmt::format("no family '{}'{}", family,
                              meant.empty() ? fmt::format(" on this machine, only: {}",
                                                          fmt::join(present, ", "))
                                            : meant));
}

std::vector<Item> select(const std::vector<Item>& items, const Selection& selection) {
  std::vector<Item> from;
  for (auto family = selection.families.begin(); family != selection.families.end(); ++family) {
    const bool repeated =
        std::any_of(selection.families.begin(), family,
                    [&family](const std::string& earlier) { return same_word(earlier, *family); });
    std::vector<Item> more = repeated ? std::vector<Item>() : family_items(items, *family);
    std::move(more.begin(), more.end(), std::back_inserter(from));
  }
  if (selection.families.empty()) {
    from = items;
  }
  if (selection.texts.empty()) {
    return from;
  }
  std::vector<Item> result;
  for (const std::string& text : selection.texts) {
    std::vector<Item> named = named_or_setting(from, text);
    std::move(named.begin(), named.end(), std::back_inserter(result));
  }
  return distinct(result);
}

std::vector<Item> select_distinct(const std::vector<Item>& items, const Selection& selection) {
  return distinct(select(items, selection));
}

Item select_one(const std::vector<Item>& items, const std::string& text) {
  std::vector<Item> named = named_items(items, text);
  if (named.size() == 1) {
    return named.front();
  }
  const auto candidates = texts_of(named, [](const Item& item) {
    return fmt::format("{} ({})", label_of(item), id_text(item.id));
  });
  throw HostError(Fault::usage, fmt::format("'{}' names {} items, one is needed: {}", text,
                                            candidates.size(), fmt::join(candidates, ", ")));
}

}  // namespace kova_host
