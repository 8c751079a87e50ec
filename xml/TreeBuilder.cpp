#include "xml/TreeBuilder.h"

#include <iterator>
#include <utility>

XMLTreeBuilder::XMLTreeBuilder(std::shared_ptr<XML::Element> root, const NSCharacterSet* trimming)
    : trimming_(trimming) {
  open(std::move(root));
}

void XMLTreeBuilder::open(std::shared_ptr<XML::Element> element) {
  if (depth_ == open_.size()) open_.emplace_back();
  Open& top = open_[depth_++];
  top.element = std::move(element);
  top.firstChild = ended_.size();
  top.text.clear();
  top.hasText = false;
}

XML::Element& XMLTreeBuilder::elementStarts(std::string name) {
  auto element = std::allocate_shared<XML::Element>(XMLTreeAllocator<XML::Element>(), std::move(name));
  element->parentElement = open_[depth_ - 1].element;
  open(std::move(element));
  return *open_[depth_ - 1].element;
}

std::size_t XMLTreeBuilder::characters(std::string_view text) {
  Open& top = open_[depth_ - 1];
  top.hasText = true;
  return top.text.append(text).size();
}

void XMLTreeBuilder::close(const NSCharacterSet* trimming) {
  Open& top = open_[--depth_];
  if (top.hasText) {
    const std::string_view text = top.text;
    top.element->text.emplace(trimming ? stringByTrimmingCharactersInSet(text, *trimming) : text);
  }
  const auto first = ended_.begin() + static_cast<std::ptrdiff_t>(top.firstChild);
  auto& children = top.element->childElements;
  children.insert(children.end(), std::make_move_iterator(first), std::make_move_iterator(ended_.end()));
  ended_.erase(first, ended_.end());
  ended_.push_back(std::move(top.element));
}

void XMLTreeBuilder::elementEnds() {
  close(trimming_);
}

void XMLTreeBuilder::finish() {
  while (depth_ > 0) close(nullptr);
}
