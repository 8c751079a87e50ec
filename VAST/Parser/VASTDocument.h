#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "xml/Accessor.h"

// One VAST document as it was fetched. A cheap value: copies share the bytes, and the tree that queries walk, which is
// built when first asked for and never twice. Any thread.
class YMR_API VASTDocument {
 public:
  explicit VASTDocument(std::vector<std::byte> bytes);
  explicit VASTDocument(std::string_view text);

  std::span<const std::byte> bytes() const;
  // The bytes as text, in whatever encoding they are.
  std::string_view text() const;

  // False also for a document that is refused for its size. Its tree reaches up to the error.
  bool isWellFormed() const;
  // What the tree costs in memory.
  std::size_t elementCount() const;

  // The document element when it is `VAST`, else a failure.
  const XML::Accessor& vast() const;
  // Every `Ad` of it; a failure when there is none.
  const XML::Accessor& ads() const;
  // How many of several have no `id`, so that nothing can stand for them.
  std::size_t namelessAdCount() const;
  // The first `Ad` with that `id`; all of them when none has it or the id is empty, which answers no query unless there
  // is just one.
  const XML::Accessor& ad(std::string_view id) const;

  // The document element; null when there is none.
  const XML::Element* root() const;
  // Every `Ad` of it, whatever stands before the names for their namespaces, in order.
  std::span<const std::shared_ptr<XML::Element>> adElements() const;

  // True for copies of one document.
  friend bool operator==(const VASTDocument& left, const VASTDocument& right) { return left.shared_ == right.shared_; }

 private:
  struct Tree;
  struct Shared;
  const Tree& tree() const;

  std::shared_ptr<Shared> shared_;
};
