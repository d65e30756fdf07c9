// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Announcement.h"

#include <QAccessible>
#include <QWidget>

namespace platform {

void announce(QWidget* widget, const QString& text) {
    if (!QAccessible::isActive())
        return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(widget, text);
#else
    static_cast<void>(text);
    QAccessibleEvent event(widget, QAccessible::NameChanged);
#endif
    QAccessible::updateAccessibility(&event);
}

} // namespace platform
