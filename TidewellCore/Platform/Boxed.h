#pragma once

#include <memory>

// A value that most owners lack: while there is none, it takes no more room than
// a pointer. It is copied and compared as the value itself.
template <typename Value>
class Boxed {
 public:
  Boxed() = default;
  Boxed(Value value) : value_(std::make_unique<Value>(std::move(value))) {}
  Boxed(const Boxed& other) : value_(other.value_ ? std::make_unique<Value>(*other.value_) : nullptr) {}
  Boxed(Boxed&&) noexcept = default;
  ~Boxed() = default;
  Boxed& operator=(Boxed other) noexcept {
    value_ = std::move(other.value_);
    return *this;
  }

  explicit operator bool() const { return value_ != nullptr; }
  const Value& operator*() const { return *value_; }
  const Value* operator->() const { return value_.get(); }
  Value* operator->() { return value_.get(); }

  // The value, made when there is none yet.
  Value& ensured() {
    if (!value_) value_ = std::make_unique<Value>();
    return *value_;
  }

  bool operator==(const Boxed& other) const {
    return value_ && other.value_ ? *value_ == *other.value_ : !value_ && !other.value_;
  }

 private:
  std::unique_ptr<Value> value_;
};
