// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QSplitter;

namespace ferrow {

class SidebarDrawer;

/// Sidebar, preview and inspector side by side. The preview takes all extra width. Where the three do not fit, the
/// sidebar becomes a drawer over the preview.
class WindowColumns : public QWidget {
    Q_OBJECT

public:
    WindowColumns(QWidget* sidebar, QWidget* preview, QWidget* inspector, QWidget* parent = nullptr);
    ~WindowColumns() override;

    [[nodiscard]] bool isNarrow() const { return narrow_; }
    /// The column, or the open drawer.
    [[nodiscard]] bool isSidebarShown() const;
    void setSidebarShown(bool shown);
    /// What of the sidebar takes the focus when the drawer opens. A focus proxy would do the same to the Tab key, which
    /// passes over what lies before it then.
    void setDrawerFocus(QWidget* widget) { drawerFocus_ = widget; }
    /// Does nothing to a column.
    void closeDrawer();

signals:
    void narrowChanged(bool narrow);
    void sidebarShownChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    friend class SidebarDrawer;

    void setNarrow(bool narrow);

    QWidget* sidebar_;
    QWidget* drawerFocus_ = nullptr;
    QSplitter* splitter_ = nullptr;
    SidebarDrawer* drawer_ = nullptr;
    bool narrow_ = false;
    bool columnShown_ = true; ///< The user's choice for the wide window.
};

} // namespace ferrow
