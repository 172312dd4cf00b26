// A reference to a callable for the length of one call: a walk hands each piece it cuts to the
// caller's lambda without copying the lambda (and what it captures) to the heap first.
#ifndef MAILSLICE_PLATFORM_FUNCTION_REF_H
#define MAILSLICE_PLATFORM_FUNCTION_REF_H

#include <memory>
#include <type_traits>
#include <utility>

namespace mailslice::platform {

template <typename Signature>
class FunctionRef;

template <typename Result, typename... Args>
class FunctionRef<Result(Args...)> {
 public:
  // The callable must outlive every call through this reference.
  template <typename Callable>
  requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionRef> &&
           std::is_invocable_r_v<Result, Callable&, Args...>)
      FunctionRef(Callable&& callable)  // NOLINT: converts like std::function
      : object_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
        call_([](void* object, Args... args) -> Result {
          return (*static_cast<std::remove_reference_t<Callable>*>(object))(
              std::forward<Args>(args)...);
        }) {}

  Result operator()(Args... args) const { return call_(object_, std::forward<Args>(args)...); }

 private:
  void* object_;
  Result (*call_)(void*, Args...);
};

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_FUNCTION_REF_H
