// The icon in the notification area, and the small window that stands in for it.
#pragma once

#include <QIcon>
#include <QWidget>
#include <functional>

namespace layer {

// Takes every icon away at the end of the program.
void RemoveNotificationIcons();

// A window of this size at the bottom right corner, above all others, that never takes the focus. A strip of
// its height stays free for it.
class StandInIcon : public QWidget {
  public:
    static constexpr int Side = 26;

    StandInIcon(const QIcon& icon, const QString& tip, std::function<void()> tapped);
    ~StandInIcon() override;

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QIcon icon_;
    std::function<void()> tapped_;
};

}  // namespace layer
