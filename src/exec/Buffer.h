// An owning array on one backend: move-only, released when it goes out of scope.
#pragma once

#include "exec/Memory.h"

#include <cstddef>
#include <utility>

namespace vx {

template <class T> class Buffer {
public:
    Buffer() = default;
    Buffer(Backend backend, std::size_t count) { allocate(backend, count); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    Buffer(Buffer&& o) noexcept { swap(o); }
    Buffer& operator=(Buffer&& o) noexcept
    {
        if (this != &o) {
            reset();
            swap(o);
        }
        return *this;
    }
    ~Buffer() { reset(); }

    void allocate(Backend backend, std::size_t count)
    {
        reset();
        backend_ = backend;
        ptr_ = static_cast<T*>(mem::allocate(backend, count * sizeof(T)));
        count_ = ptr_ ? count : 0;
    }
    void reset()
    {
        mem::release(backend_, ptr_);
        ptr_ = nullptr;
        count_ = 0;
    }
    /// Copies count host elements in; the buffer must hold at least that many.
    void upload(const T* host, std::size_t count) { mem::upload(backend_, ptr_, host, count * sizeof(T)); }
    void download(T* host, std::size_t count) const
    {
        mem::download(backend_, host, ptr_, count * sizeof(T));
    }

    T* data() const { return ptr_; }
    std::size_t size() const { return count_; }
    bool empty() const { return ptr_ == nullptr; }
    explicit operator bool() const { return ptr_ != nullptr; }
    Backend backend() const { return backend_; }

private:
    void swap(Buffer& o) noexcept
    {
        std::swap(backend_, o.backend_);
        std::swap(ptr_, o.ptr_);
        std::swap(count_, o.count_);
    }
    Backend backend_ = Backend::Host;
    T* ptr_ = nullptr;
    std::size_t count_ = 0;
};

/// Resizes host to n and copies n elements of buffer into it (nothing when either is empty).
template <class V, class B> void downloadInto(V& host, const B& buffer, std::size_t n)
{
    host.resize(n);
    if (n && buffer)
        buffer.download(host.data(), n);
}

} // namespace vx
