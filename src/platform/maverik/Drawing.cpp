#include "platform/maverik/Drawing.h"

#include <utility>

namespace {

/// One after the other: the destructor of the first would go as deep as the list is long.
void DropAll(std::unique_ptr<GraphicsMesh> first) noexcept {
    while (first) {
        first = std::move(first->next);
    }
}

}  // namespace

DrawingGarbage::~DrawingGarbage() {
    DropAll(std::move(m_first));
}

void DrawingGarbage::Add(std::unique_ptr<GraphicsMesh> mesh) noexcept {
    const std::lock_guard lock(m_mutex);
    if (!m_closed) {
        mesh->next = std::move(m_first);
        m_first = std::move(mesh);
    }
}

std::unique_ptr<GraphicsMesh> DrawingGarbage::TakeAll() noexcept {
    const std::lock_guard lock(m_mutex);
    return std::move(m_first);
}

void DrawingGarbage::Close() noexcept {
    std::unique_ptr<GraphicsMesh> rest;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        rest = std::move(m_first);
    }
    DropAll(std::move(rest));
}

bool DrawingGarbage::IsClosed() const noexcept {
    const std::lock_guard lock(m_mutex);
    return m_closed;
}

MAV_drawing::~MAV_drawing() {
    if (mesh && garbage) {
        garbage->Add(std::move(mesh));
    }
}
