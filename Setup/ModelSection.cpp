// SPDX-License-Identifier: MIT
#include "Setup/ModelSection.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/InsetSection.h"
#include "Platform/Widgets/Controls/ListRow.h"
#include "Setup/SetupTexts.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace setup {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::ListRow;
using platform::observe;
using platform::Theme;
using Kind = StatusRow::Kind;

namespace {

double fraction(qint64 received, qint64 whole) {
    return whole > 0 ? static_cast<double>(received) / static_cast<double>(whole) : 0;
}

void showChosen(ListRow& row, bool isChosen) {
    row.setSelected(isChosen);
    row.setMark(isChosen ? ListRow::Mark{texts::selected(), u"checkmark"_s, ColorRole::Accent}
                         : ListRow::Mark());
}

} // namespace

ModelSection::ModelSection(const Theme& theme, const SetupState& state, const SetupActions& actions)
    : m_theme(theme)
    , m_state(state)
    , m_actions(actions)
    , m_status(new StatusRow(theme, texts::model())) {
    auto* section = new platform::InsetSection(theme, texts::model(), {});
    section->setHeaderItem(fileButton());
    for (qsizetype i = 0; i < m_state.offers.value().size(); ++i)
        section->addRow(offerRow(i));
    section->addRow(ownFileRow());
    section->addRow(m_status);
    m_status->button()->setAction([this] { goOn(); });
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->addWidget(section);
    observe(
        section, [this, section] { section->setFooter(footer()); });
    observe(m_status, [this] { m_status->show(current()); });
}

const ModelOffer& ModelSection::chosen() const {
    const auto& offers = m_state.offers.value();
    return offers.at(std::clamp<qsizetype>(m_state.chosen.value(), 0, offers.size() - 1));
}

bool ModelSection::isUnderWay() const {
    const auto phase = m_state.model.value();
    return phase == ModelPhase::Fetching || phase == ModelPhase::Checking;
}

bool ModelSection::usesOwnFile() const {
    return m_state.model.value() == ModelPhase::Ready && !m_state.ownFile.value().isEmpty();
}

// The rows

QWidget* ModelSection::offerRow(qsizetype index) {
    auto* row = new ListRow(m_theme);
    row->setAction([this, index] {
        m_triedFile = false;
        m_actions.choose(index);
    });
    observe(row, [this, row, index] {
        const bool isChosen = m_state.chosen.value() == index;
        const auto& offer = m_state.offers.value().at(index);
        row->setName(offer.name);
        row->setDetail(texts::details(offer));
        showChosen(*row, isChosen && !usesOwnFile());
        row->setBusy(isUnderWay());
        row->setFocusPolicy(isUnderWay() ? Qt::NoFocus : Qt::TabFocus);
        row->setVisible(isChosen || !isUnderWay());
    });
    return row;
}

QWidget* ModelSection::ownFileRow() {
    auto* row = new ListRow(m_theme);
    row->setBusy(true); // there is nothing to press
    row->setFocusPolicy(Qt::NoFocus);
    row->hide();
    observe(row, [this, row] {
        const QFileInfo file(m_state.ownFile.value());
        row->setName(file.fileName());
        row->setDetail(texts::ownFile() + u" · "_s +
                       texts::shortPath(file.path(), QDir::homePath()));
        showChosen(*row, true);
        row->setVisible(usesOwnFile());
    });
    return row;
}

/// Up, Down, Home and End go through the models.
void ModelSection::keyPressEvent(QKeyEvent* event) {
    QList<ListRow*> rows = findChildren<ListRow*>();
    rows.removeIf(
        [](const ListRow* row) { return !row->isVisible() || row->focusPolicy() == Qt::NoFocus; });
    const qsizetype last = rows.size() - 1;
    const qsizetype at = std::ranges::find_if(rows, &QWidget::hasFocus) - rows.begin();
    const QMap<int, qsizetype> next{{Qt::Key_Up, std::max<qsizetype>(at - 1, 0)},
                                    {Qt::Key_Down, std::min(at + 1, last)},
                                    {Qt::Key_Home, 0},
                                    {Qt::Key_End, last}};
    if (at <= last && next.contains(event->key()))
        rows.at(next.value(event->key()))->setFocus(Qt::TabFocusReason);
    else
        QWidget::keyPressEvent(event);
}

QWidget* ModelSection::fileButton() {
    auto* button = new Button(m_theme, Button::Look::Link, texts::useFile());
    button->setAction([this] { askForFile(); });
    observe(button, [this, button] { button->setVisible(!isUnderWay()); });
    return button;
}

void ModelSection::askForFile() {
    auto* dialog =
        new QFileDialog(window(), texts::chooseFile(), QDir::homePath(), texts::modelFiles());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
        m_triedFile = true;
        m_actions.useFile(path);
    });
    dialog->open();
}

// How far it is

QString ModelSection::footer() const {
    const auto& folder = m_state.folder.value();
    if (usesOwnFile())
        return {};
    if (m_state.model.value() == ModelPhase::Ready)
        return texts::keptIn(folder, QDir::homePath());
    return texts::origin(chosen(), folder, m_state.room.value(), QDir::homePath());
}

StatusRow::Status ModelSection::current() const {
    const qint64 received = m_state.received.value();
    const qint64 whole = chosen().size;
    switch (m_state.model.value()) {
    case ModelPhase::Offered:
        if (m_state.room.value() < whole)
            return {.kind = Kind::Problem,
                    .text = texts::tooLittleRoom(whole, m_state.room.value()),
                    .button = texts::download()};
        return {.text = texts::notHere(), .button = texts::download()};
    case ModelPhase::Fetching: {
        const qint64 rate = m_state.rate.value();
        const bool isConnecting = received == 0 && rate == 0;
        return {.text = isConnecting ? texts::connecting() : texts::progress(received, whole, rate),
                .spoken = texts::spokenProgress(received, whole),
                .hasBar = true,
                .fraction = isConnecting ? std::nullopt : std::optional(fraction(received, whole)),
                .button = texts::pause()};
    }
    case ModelPhase::Paused:
        return {.text = texts::paused(received, whole),
                .hasBar = true,
                .fraction = fraction(received, whole),
                .button = texts::resume()};
    case ModelPhase::Checking:
        return {.text = texts::checking(), .hasBar = true, .fraction = std::nullopt};
    case ModelPhase::Ready:
        return {.kind = Kind::Done, .text = texts::ready()};
    case ModelPhase::Failed:
        break;
    }
    return failed();
}

StatusRow::Status ModelSection::failed() const {
    const bool isAgain = !m_triedFile.value();
    return {.kind = Kind::Problem,
            .text = m_state.modelProblem.value(),
            .button = isAgain ? texts::tryAgain() : texts::download()};
}

void ModelSection::goOn() {
    m_triedFile = false;
    if (m_state.model.value() == ModelPhase::Fetching)
        m_actions.pause();
    else
        m_actions.download();
}

} // namespace setup
