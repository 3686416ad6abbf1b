// Memory that a step keeps on one engine between its calls, such as the low-point correction's
// ground model. The engine holds it without knowing its type and drops it together with the
// rest of the backend data (clearing memory, changing the backend).
#pragma once

#include <map>
#include <memory>
#include <typeindex>

namespace vx {

class StepStates {
public:
    /// The state of type S, made empty on first use.
    template <class S> S& get()
    {
        std::shared_ptr<void>& slot = slots[std::type_index(typeid(S))];
        if (!slot)
            slot = std::make_shared<S>();
        return *static_cast<S*>(slot.get());
    }

    /// The state of type S, or null when the step never ran since the last clear.
    template <class S> const S* find() const
    {
        const auto it = slots.find(std::type_index(typeid(S)));
        return it == slots.end() ? nullptr : static_cast<const S*>(it->second.get());
    }

    void clear() { slots.clear(); }

private:
    std::map<std::type_index, std::shared_ptr<void>> slots;
};

} // namespace vx
