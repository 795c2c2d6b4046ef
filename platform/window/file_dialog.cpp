// SPDX-License-Identifier: MIT

// GetOpenFileNameA and GetSaveFileNameA.

#include <windows.h>

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMessageBox>
#include <QScreen>
#include <QTreeView>
#include <cstring>

#include "platform/window/dialog.h"
#include "platform/window/main_thread.h"
#include "platform/window/modal_loop.h"
#include "platform/window/text_codec.h"

namespace ui = vt63x::ui;

namespace vt63x::ui {
namespace {

constexpr QSize kSize(800, 500);  // where the screen has room for it
constexpr DWORD kFlags = OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST | OFN_EXPLORER;

// Pairs of description and pattern, each with its terminator, and one more at the end.
QStringList FiltersOf(const char* filter) {
  QStringList filters;
  while (filter != nullptr && *filter != '\0') {
    const QString description = FromProgram(filter);
    filter += std::strlen(filter) + 1;
    if (*filter == '\0') break;
    filters += QStringLiteral("%1 (%2)").arg(description,
                                             FromProgram(filter).replace(QChar(';'), QChar(' ')));
    filter += std::strlen(filter) + 1;
  }
  return filters;
}

// Every column as wide as what it shows.
void ShowWholeColumns(QFileDialog& dialog) {
  dialog.setViewMode(QFileDialog::Detail);
  auto* const files = dialog.findChild<QTreeView*>();
  if (files == nullptr) return;
  files->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  dialog.resize(kSize.boundedTo(dialog.screen()->availableSize()));
}

void Prepare(QFileDialog& dialog, const OPENFILENAMEA& request, bool save) {
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setOption(QFileDialog::DontConfirmOverwrite);
  dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  const bool existing = !save && (request.Flags & OFN_FILEMUSTEXIST) != 0;
  dialog.setFileMode(existing ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
  dialog.setNameFilters(FiltersOf(request.lpstrFilter));
  ShowWholeColumns(dialog);
  // Where the file chosen last is, since choosing moves the current directory.
  dialog.setDirectory(QDir::currentPath());
  const QString name = FromProgram(request.lpstrFile);
  // A pattern says what to show, not what to take.
  if (!name.contains(QChar('*')) && !name.contains(QChar('?'))) dialog.selectFile(name);
}

// The path as the program's bytes; the user hears about one that the program has no room for.
bool Store(QFileDialog& dialog, OPENFILENAMEA& request) {
  if (dialog.selectedFiles().isEmpty()) return false;
  const QString chosen = QDir::toNativeSeparators(dialog.selectedFiles().constFirst());
  const std::string path = ToProgram(chosen);
  if (path.size() >= request.nMaxFile) {
    QMessageBox::warning(&dialog, dialog.windowTitle(),
                         QStringLiteral("The path of this file has %1 characters; at most %2 are "
                                        "possible:\n%3")
                             .arg(path.size())
                             .arg(request.nMaxFile - 1)
                             .arg(chosen));
    return false;
  }
  std::memcpy(request.lpstrFile, path.c_str(), path.size() + 1);
  QDir::setCurrent(QFileInfo(chosen).absolutePath());
  return true;
}

BOOL AskFile(OPENFILENAMEA& request, bool save) {
  Window* const owner = Window::Find(request.hwndOwner);
  QFileDialog dialog(owner == nullptr ? nullptr : owner->widget());
  dialog.setModal(false);  // the owner alone is disabled, as by any dialog
  Prepare(dialog, request, save);
  OwnerDisabled owner_disabled(request.hwndOwner);
  ModalLoop loop([&dialog] {
    // With what it may be asking the user.
    for (auto* const question : dialog.findChildren<QDialog*>()) question->reject();
    dialog.reject();
  });
  while (!loop.ended()) {
    if (dialog.exec() != QDialog::Accepted) return FALSE;
    if (Store(dialog, request)) return TRUE;
  }
  return FALSE;
}

BOOL AskFileOnMain(OPENFILENAMEA* request, bool save) {
  if (request == nullptr || request->lpstrFile == nullptr || request->nMaxFile == 0 ||
      (request->Flags & ~kFlags) != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  NeedApplication();
  return CallOnMain<BOOL>(FALSE, [&] { return AskFile(*request, save); });
}

}  // namespace
}  // namespace vt63x::ui

BOOL WINAPI GetOpenFileNameA(OPENFILENAMEA* request) { return ui::AskFileOnMain(request, false); }

BOOL WINAPI GetSaveFileNameA(OPENFILENAMEA* request) { return ui::AskFileOnMain(request, true); }
