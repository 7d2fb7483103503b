// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLayout>
#include <QList>

#include <memory>
#include <vector>

namespace bram
{

/// Puts widgets side by side in rows, as words are put on lines: as many rows as the width asks for.
class FlowLayout final : public QLayout
{
    Q_OBJECT

public:
    explicit FlowLayout(QWidget *parent = nullptr);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    void setGeometry(const QRect &area) override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;

private:
    enum class Placing {
        Measure,
        Place,
    };

    /// The height that the rows take within `area`.
    int arrange(const QRect &area, Placing placing) const;

    std::vector<std::unique_ptr<QLayoutItem>> m_items;
};

} // namespace bram
