#include "WindowAlert.h"

#include <QMessageBox>

#include <cstdio>

namespace vocato {

void WindowAlert::Show(std::string_view title, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
    auto* box = new QMessageBox(QMessageBox::Information,
                                QString::fromUtf8(title.data(), qsizetype(title.size())),
                                QString::fromUtf8(text.data(), qsizetype(text.size())),
                                QMessageBox::NoButton, parent_);
    box->addButton(QStringLiteral("Ok"), QMessageBox::AcceptRole);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(false);
    box->show();
}

} // namespace vocato
