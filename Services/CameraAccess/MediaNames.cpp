#include "Services/CameraAccess/MediaNames.h"

std::string_view nameOf(Platform::MediaStreamType type) {
    switch (type) {
    case Platform::MediaStreamType::VideoPreview:
        return "VideoPreview";
    case Platform::MediaStreamType::VideoRecord:
        return "VideoRecord";
    case Platform::MediaStreamType::Audio:
        return "Audio";
    case Platform::MediaStreamType::Photo:
        return "Photo";
    }
    return "";
}

std::string_view nameOf(Platform::MediaFrameSourceKind kind) {
    switch (kind) {
    case Platform::MediaFrameSourceKind::Custom:
        return "Custom";
    case Platform::MediaFrameSourceKind::Color:
        return "Color";
    case Platform::MediaFrameSourceKind::Infrared:
        return "Infrared";
    case Platform::MediaFrameSourceKind::Depth:
        return "Depth";
    case Platform::MediaFrameSourceKind::Audio:
        return "Audio";
    case Platform::MediaFrameSourceKind::Image:
        return "Image";
    }
    return "";
}

std::string_view nameOf(Platform::Panel panel) {
    switch (panel) {
    case Platform::Panel::Unknown:
        return "Unknown";
    case Platform::Panel::Front:
        return "Front";
    case Platform::Panel::Back:
        return "Back";
    case Platform::Panel::Top:
        return "Top";
    case Platform::Panel::Bottom:
        return "Bottom";
    case Platform::Panel::Left:
        return "Left";
    case Platform::Panel::Right:
        return "Right";
    }
    return "";
}
