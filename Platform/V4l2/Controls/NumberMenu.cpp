#include "Platform/V4l2/Controls/NumberMenu.h"

namespace Platform::V4l2 {

NumberMenu::NumberMenu(KernelControls& kernelControls, std::uint32_t id)
    : controls(kernelControls), control(controls.find({id})),
      entries(control ? controls.menuNumbers(*control) : Entries{}) {}

std::optional<double> NumberMenu::value() {
    const auto index = control ? controls.read(*control) : std::nullopt;
    for (const auto& entry : entries)
        if (entry.first == index)
            return numberOf(entry);
    return std::nullopt;
}

double NumberMenu::numberOf(const Entries::value_type& entry) {
    constexpr double thousandths = 1000.0;
    return static_cast<double>(entry.second) / thousandths;
}

} // namespace Platform::V4l2
