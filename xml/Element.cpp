#include "xml/Element.h"

std::string XML::Element::path() const {
  std::string path = name;
  for (auto ancestor = parentElement.lock(); ancestor; ancestor = ancestor->parentElement.lock()) {
    path.insert(0, ancestor->name + " > ");
  }
  return path;
}
