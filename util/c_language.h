#pragma once

#include <QString>

/// The texts of the user's language, from the suite's language file: an INI file in UTF-8 with a
/// section for each language (CN, TW, EN) and one that names object identifiers (OID).
///
/// Which language is the choice made for the whole suite in its client configuration; this class
/// only reads it. The ways to a text for all who show one are in util/texts.h. GUI thread only.
class c_language
{
public:
    /// The language file's name, unless it is set.
    static constexpr const char *kDefaultFileName = "PXViewCertTool_Lang.ini";

    /// The single table, created by the first call and kept until the process ends: never null,
    /// and not to be deleted. It has no file name yet, so its look-ups find nothing before
    /// `LANG_SetFileName`.
    static c_language *GetLangPtr();

    /// What `GetLangPtr` returns; null before its first call.
    static c_language *_lang;

    /// Makes sure that the core manager exists, asks the core for the configuration and install
    /// paths (both stay empty without a core, and stay as they are from then on) and chooses the
    /// language.
    c_language();

    /// The language file's name; an empty one stands for `kDefaultFileName`.
    void LANG_SetFileName(const QString &name);

    /// Reads the client configuration again and chooses the section: "CN" unless it names another.
    void LANG_SetLang();

    /// The text under `key` in the section in force. True when it is not empty; a missing key, or
    /// a missing file, leaves `value` empty. An edit of the file is seen; costs as
    /// `ini_table::lookup`.
    bool GetValue(const QString &key, QString &value) const;

    /// The text under `key`, or the key itself when it has none.
    QString GetValue(const QString &key) const;

    /// The text under `key` in the section in force, and what the section of identifiers of the
    /// file of the default name calls the one of this dotted form; empty where there is none.
    QString text(QStringView key) const;
    QString nameOfIdentifier(QStringView dotted) const;

    /// The section in force: "CN", "TW" or "EN".
    QString section() const;

    /// Where a language file of this name lies, whether or not there is one.
    QString languageFilePath(const QString &fileName) const;

private:
    QString m_configPath;
    QString m_installPath;
    QString m_fileName;
    QString m_section;
    // So that a look-up does not put them together.
    QString m_filePath;        ///< of `m_fileName`
    QString m_identifiersPath; ///< of `kDefaultFileName`
};
