#pragma once

#include "grid/ZelImportWTGrid.h"

#include "platform/TemplateDialog.h"

#include <QString>

#include <vector>

struct resbuf;

// The wire types of another drawing or template, listed for the drafter to tick the ones
// to bring over, with two options for a wire type of the same name in this drawing. The
// dialog changes nothing itself: its callers read the chosen rows after the run.
class ZelImportWTDlg : public platform::TemplateDialog {
public:
    using RowFields = ZelImportWTGrid::RowFields;
    using Rows = std::vector<RowFields>;

    // The settings stay the caller's, who releases them after reading the rows.
    ZelImportWTDlg(resbuf*& settings, const std::vector<QString>& names, QWidget* parent);
    ZelImportWTDlg(resbuf*& settings, QWidget* parent);
    explicit ZelImportWTDlg(QWidget* parent);

    bool OnInitDialog() override;
    void OnOK() override;
    bool OnCommand(int id) override;
    bool PreTranslateKey(QKeyEvent* event) override;

    // Each call appends to what the last one left: callers take them once.
    Rows& GetChosenRows(bool bLispOrder);
    Rows& GetAllRows(bool bLispOrder);
    // The rows the caller named beforehand, or all rows when it named none; filled anew
    // at each call.
    Rows& GetPresetRows(bool bLispOrder);

    static bool GetImportAppearance();
    static bool GetImportProperties();

    // OK only with a row selected; the toggle says Clear All once every row is.
    void RefreshButtons();

    ZelImportWTGrid& grid() { return m_grid; }

private:
    void ToggleSelectAll();
    void ShowHelp();

    resbuf* m_pSettings = nullptr;
    ZelImportWTGrid m_grid;
    Rows m_chosenRows;
    Rows m_allRows;
    Rows m_presetRows;
    std::vector<QString> m_presetNames;
};
