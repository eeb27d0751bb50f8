#include "dialogs/ZelImportWTDlg.h"

#include "shell/ResourceOverride.h"

#include "ovcore/OvEdInput.h"
#include "platform/Resources.h"

#include <QKeyEvent>

#include <algorithm>

namespace {

// The drafter's last answers since the host started; a cancelled dialog leaves them.
bool s_bImportAppearance = false;
bool s_bImportProperties = false;

constexpr int kGridId = 1035;
constexpr int kSelectAllId = 1036;
constexpr int kAppearanceId = 1037;
constexpr int kPropertiesId = 1039;
constexpr int kHelpId = 1013;

} // namespace

ZelImportWTDlg::ZelImportWTDlg(resbuf*& settings, const std::vector<QString>& names,
                               QWidget* parent)
    : platform::TemplateDialog(1040, parent), m_pSettings(settings), m_presetNames(names) {}

ZelImportWTDlg::ZelImportWTDlg(resbuf*& settings, QWidget* parent)
    : platform::TemplateDialog(1040, parent), m_pSettings(settings) {}

ZelImportWTDlg::ZelImportWTDlg(QWidget* parent) : platform::TemplateDialog(1040, parent) {}

bool ZelImportWTDlg::OnInitDialog() {
    // Caption and title are the template's own.
    const ResourceOverride resources;
    AttachGrid(&m_grid, kGridId);
    m_grid.SetSettings(m_pSettings);
    m_grid.SetPresetNames(m_presetNames);
    m_grid.InitGrid();
    m_grid.SetReadOnly(true);
    CheckDlgButton(kAppearanceId, s_bImportAppearance ? 1 : 0);
    CheckDlgButton(kPropertiesId, s_bImportProperties ? 1 : 0);
    // Room for the fixed columns and a few values; the drafter can make it larger.
    resize(std::max(width(), 900), std::max(height(), 480));
    m_grid.setFocus();
    return true;
}

void ZelImportWTDlg::OnOK() {
    s_bImportAppearance = IsDlgButtonChecked(kAppearanceId) != 0;
    s_bImportProperties = IsDlgButtonChecked(kPropertiesId) != 0;
    platform::TemplateDialog::OnOK();
}

bool ZelImportWTDlg::OnCommand(int id) {
    if (id == kSelectAllId) {
        ToggleSelectAll();
        return true;
    }
    if (id == kHelpId) {
        ShowHelp();
        return true;
    }
    return platform::TemplateDialog::OnCommand(id);
}

bool ZelImportWTDlg::PreTranslateKey(QKeyEvent* event) {
    if (event->type() == QEvent::KeyPress && event->key() == Qt::Key_F1) {
        ShowHelp();
        return true;
    }
    return false;
}

void ZelImportWTDlg::ShowHelp() {
    ovedHelp(L"", L"import_wire_types_dialog", 0);
}

void ZelImportWTDlg::RefreshButtons() {
    const ResourceOverride resources;
    std::vector<quint32> rows;
    const int count = m_grid.GetSelectedRows(rows, true, false);
    EnableDlgItem(IDOK, count != 0);
    // Between none and all the caption stays as it was, so that the toggle keeps
    // meaning what the drafter last used it for.
    if (count == 0)
        SetDlgItemCaption(kSelectAllId, 171);
    else if (count == m_grid.GetLoadedRows())
        SetDlgItemCaption(kSelectAllId, 172);
}

void ZelImportWTDlg::ToggleSelectAll() {
    const ResourceOverride resources;
    const bool clearing =
        GetDlgItemText(kSelectAllId).compare(platform::loadString(172), Qt::CaseInsensitive) == 0;
    m_grid.SelectRange(platform::GridRange(1, 0, m_grid.GetRowCount(), m_grid.GetColCount()),
                       !clearing);
    SetDlgItemCaption(kSelectAllId, clearing ? 171 : 172);
    EnableDlgItem(IDOK, !clearing);
}

ZelImportWTDlg::Rows& ZelImportWTDlg::GetChosenRows(bool bLispOrder) {
    // Rows in the order the drafter selected them, each once.
    std::vector<bool> taken(static_cast<std::size_t>(m_grid.GetRowCount()) + 1, false);
    for (const platform::GridRange& range : m_grid.GetSelectedRanges()) {
        if (range.left() != 1 || range.right() != m_grid.GetColCount())
            continue;
        for (int row = range.top(); row <= range.bottom(); ++row) {
            if (row < 1 || row > m_grid.GetRowCount() || taken.at(static_cast<std::size_t>(row)))
                continue;
            taken.at(static_cast<std::size_t>(row)) = true;
            m_chosenRows.push_back(m_grid.GetRowFields(row, bLispOrder));
        }
    }
    return m_chosenRows;
}

ZelImportWTDlg::Rows& ZelImportWTDlg::GetAllRows(bool bLispOrder) {
    for (int row = 1; row <= m_grid.GetLoadedRows(); ++row)
        m_allRows.push_back(m_grid.GetRowFields(row, bLispOrder));
    return m_allRows;
}

ZelImportWTDlg::Rows& ZelImportWTDlg::GetPresetRows(bool bLispOrder) {
    m_presetRows.clear();
    for (int row = 1; row <= m_grid.GetLoadedRows(); ++row) {
        const QString name = m_grid.GetLayerName(row);
        bool wanted = m_presetNames.empty();
        for (std::size_t i = 0; !wanted && i < m_presetNames.size(); ++i)
            wanted = name == m_presetNames[i];
        if (wanted)
            m_presetRows.push_back(m_grid.GetRowFields(row, bLispOrder));
    }
    return m_presetRows;
}

bool ZelImportWTDlg::GetImportAppearance() {
    return s_bImportAppearance;
}

bool ZelImportWTDlg::GetImportProperties() {
    return s_bImportProperties;
}
