#pragma once

#include <QString>
#include <QWidget>

class QLineEdit;
class QPushButton;

namespace rehearsal {

/// The name of a file, to be typed or browsed for.
class FileField final : public QWidget
{
    Q_OBJECT

public:
    enum class Purpose { Open, Save };

    /// @param stem of the object names: m_<stem>LineEdit, m_<stem>BrowseButton, m_<stem>FileDialog
    /// @param title of the file dialog, and what a screen reader calls the field
    /// @param filter of the file dialog: "Pictures (*.png)"
    FileField(const QString &stem, Purpose purpose, const QString &title, const QString &filter,
              QWidget *parent = nullptr);

    /// An absolute path; empty when the field is.
    QString file() const;
    void setFile(const QString &file);
    /// The folder that a name without one is meant in; at first the current one.
    void setFolder(const QString &folder) { m_folder = folder; }
    /// The suffix that the file dialog gives to a name without one.
    void setDefaultSuffix(const QString &suffix) { m_suffix = suffix; }

signals:
    void edited();
    /// Chosen in the file dialog, where the user agreed to replace what is to be saved to.
    void chosen(const QString &file);

private:
    void browse();

    QString m_stem;
    Purpose m_purpose;
    QString m_title;
    QString m_filter;
    QString m_suffix;
    QString m_folder;
    QLineEdit *m_name;
    QPushButton *m_browse;
};

} // namespace rehearsal
