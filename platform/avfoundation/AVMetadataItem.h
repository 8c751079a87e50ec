#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/foundation/NSLocale.h"

inline constexpr const char* AVMetadataKeySpaceCommon = "comn";
inline constexpr const char* AVMetadataCommonKeyTitle = "title";
inline constexpr const char* AVMetadataCommonKeyDescription = "description";
inline constexpr const char* AVMetadataCommonKeyArtwork = "artwork";

// What a host tells of a programme: a key of a key space, for readers of a locale. A plain value.
//
// Kept from the platform: key space, key, locale, value. Left out: identifiers, times, extra attributes.
class AVMetadataItem {
 public:
  // Text (UTF-8), or the bytes of an encoded picture; empty when never set.
  using Value = std::variant<std::monostate, std::string, std::vector<std::byte>>;

  const std::string& keySpace() const { return keySpace_; }
  const std::string& key() const { return key_; }
  const NSLocale& locale() const { return locale_; }
  const Value& value() const { return value_; }
  // The value as text, as bytes; null when it is something else.
  const std::string* stringValue() const { return std::get_if<std::string>(&value_); }
  const std::vector<std::byte>* dataValue() const { return std::get_if<std::vector<std::byte>>(&value_); }

  // Those of `items` that have the key, in their order.
  static std::vector<AVMetadataItem> metadataItemsFromArray(const std::vector<AVMetadataItem>& items,
                                                            const std::string& key, const std::string& keySpace) {
    std::vector<AVMetadataItem> found;
    for (const auto& item : items) {
      if (item.key_ == key && item.keySpace_ == keySpace) found.push_back(item);
    }
    return found;
  }

 protected:
  std::string keySpace_;
  std::string key_;
  NSLocale locale_;
  Value value_;
};

// A metadata item in the making; it goes into a list of AVMetadataItem as a copy.
class AVMutableMetadataItem : public AVMetadataItem {
 public:
  void setKeySpace(std::string keySpace) { keySpace_ = std::move(keySpace); }
  void setKey(std::string key) { key_ = std::move(key); }
  void setLocale(NSLocale locale) { locale_ = std::move(locale); }
  void setValue(Value value) { value_ = std::move(value); }
};
