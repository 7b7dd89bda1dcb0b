#pragma once

// A function of three arguments behind one virtual call: what a sampler hands its points to.

#include <utility>

namespace velloran {

template <typename Result, typename First, typename Second, typename Third>
class VirtualFunction3 {
 public:
    virtual ~VirtualFunction3() = default;
    virtual Result operator()(First first, Second second, Third third) = 0;
};

/// Any callable as one.
template <typename Callable, typename Result, typename First, typename Second, typename Third>
class ProxyFunction3 : public VirtualFunction3<Result, First, Second, Third> {
 public:
    explicit ProxyFunction3(Callable callable) : callable_(std::move(callable)) {}
    Result operator()(First first, Second second, Third third) override {
        return callable_(first, second, third);
    }

 private:
    Callable callable_;
};

}  // namespace velloran
