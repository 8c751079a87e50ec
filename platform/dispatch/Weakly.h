#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

// Calls `use` with `object` and what was given, or with the object alone where it takes no more.
template <typename Use, typename Object, typename... Given>
void callWithWhatItTakes(const Use& use, Object& object, Given&&... given) {
  if constexpr (std::is_invocable_v<const Use&, Object&, Given...>) {
    std::invoke(use, object, std::forward<Given>(given)...);
  } else {
    std::invoke(use, object);
  }
}

// A block for later that does not keep `object` alive. When it is called and the object is still there, it calls `use`,
// a function or a member function, with the object and what the block was given, or with the object alone where `use`
// takes no more. The object stays alive for that call; when it has gone, the block does nothing.
//
// The block may be copied, called several times and on any thread; it is as safe there as `use` is.
template <typename Object, typename Use>
auto weakly(std::weak_ptr<Object> object, Use use) {
  return [object = std::move(object), use = std::move(use)]<typename... Given>(Given&&... given) -> void {
    if (const auto self = object.lock()) callWithWhatItTakes(use, *self, std::forward<Given>(given)...);
  };
}
