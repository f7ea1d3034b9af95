#ifndef LUMO25D_ORBI_TOOLS_UNSETALLOCATOR_H
#define LUMO25D_ORBI_TOOLS_UNSETALLOCATOR_H

#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace ORBI_LUMO25D
{

/// For vectors that are filled by assignment right after they got their size: resize(n) leaves new elements without a
/// value. So they aren't written twice, and fresh memory is touched first by the threads that fill it, which then share
/// its page faults.
template <class T>
class UnsetAllocator : public std::allocator<T>
{
public:
    template <class U>
    struct rebind
    {
        using other = UnsetAllocator<U>;
    };

    UnsetAllocator() = default;
    template <class U>
    UnsetAllocator(const UnsetAllocator<U>&) noexcept
    {
    }

    template <class U>
    void construct(U*) noexcept
    {
        static_assert(std::is_trivially_copyable_v<U> && std::is_trivially_destructible_v<U>,
                      "assignment must be enough to bring an element into being");
    }
    template <class U, class... Args>
    void construct(U* p, Args&&... args)
    {
        ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }
};

} // namespace ORBI_LUMO25D

#endif
