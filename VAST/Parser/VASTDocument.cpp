#include "VAST/Parser/VASTDocument.h"

#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

#include "xml/Parser.h"

struct VASTDocument::Tree {
  explicit Tree(std::span<const std::byte> bytes)
      : isWellFormed(parser.parse(bytes)), vast(XML::Accessor(parser.documentRoot())["VAST"]), ads(vast["Ad"]) {
    if (ads.count() == 0) findQualifiedAds();
    if (ads.count() < 2) return;
    for (const auto& element : ads.elements()) {
      const auto id = element->attributes.find("id");
      if (id == element->attributes.end()) {
        ++namelessAdCount;
      } else if (!id->second.empty()) {
        adsById.try_emplace(id->second, element);
      }
    }
  }

  const XML::Element* root() const {
    const auto& children = parser.documentRoot()->childElements;
    return children.empty() ? nullptr : children.front().get();
  }

  // Those that the plain names do not find.
  void findQualifiedAds() {
    if (!root()) return;
    for (const auto& element : root()->childElements) {
      if (element->name == "Ad" || element->name.ends_with(":Ad")) qualifiedAds.push_back(element);
    }
  }

  XML::Parser parser;
  const bool isWellFormed;
  const XML::Accessor vast;
  const XML::Accessor ads;
  std::unordered_map<std::string_view, XML::Accessor> adsById;  // of several; the keys live in the elements
  std::size_t namelessAdCount = 0;
  std::vector<std::shared_ptr<XML::Element>> qualifiedAds;
};

struct VASTDocument::Shared {
  explicit Shared(std::vector<std::byte> given) : bytes(std::move(given)) {}

  const std::vector<std::byte> bytes;
  std::once_flag parsed;
  std::optional<Tree> tree;
};

VASTDocument::VASTDocument(std::vector<std::byte> bytes) : shared_(std::make_shared<Shared>(std::move(bytes))) {}

VASTDocument::VASTDocument(std::string_view text)
    : VASTDocument(std::vector<std::byte>(reinterpret_cast<const std::byte*>(text.data()),
                                          reinterpret_cast<const std::byte*>(text.data() + text.size()))) {}

std::span<const std::byte> VASTDocument::bytes() const {
  return shared_->bytes;
}

std::string_view VASTDocument::text() const {
  return {reinterpret_cast<const char*>(shared_->bytes.data()), shared_->bytes.size()};
}

const VASTDocument::Tree& VASTDocument::tree() const {
  std::call_once(shared_->parsed, [this] { shared_->tree.emplace(shared_->bytes); });
  return *shared_->tree;
}

bool VASTDocument::isWellFormed() const {
  return tree().isWellFormed;
}

std::size_t VASTDocument::elementCount() const {
  return tree().parser.elementCount();
}

const XML::Accessor& VASTDocument::vast() const {
  return tree().vast;
}

const XML::Accessor& VASTDocument::ads() const {
  return tree().ads;
}

std::size_t VASTDocument::namelessAdCount() const {
  return tree().namelessAdCount;
}

const XML::Accessor& VASTDocument::ad(std::string_view id) const {
  const auto found = tree().adsById.find(id);
  return found == tree().adsById.end() ? tree().ads : found->second;
}

const XML::Element* VASTDocument::root() const {
  return tree().root();
}

std::span<const std::shared_ptr<XML::Element>> VASTDocument::adElements() const {
  const auto& qualified = tree().qualifiedAds;
  return qualified.empty() ? tree().ads.elements() : std::span(qualified);
}
