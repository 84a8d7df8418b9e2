#pragma once

#include "peptides/Peptide.h"

namespace zel {

/// Candidate peptides, with the JSON text by which they travel: one array of Peptide objects.
class ZEL_EXPORT PeptidesList
{
public:
    PeptidesList() = default;
    explicit PeptidesList(const QList<Peptide>& peptides)
        : m_peptides(peptides)
    {}

    void addPeptide(const Peptide& peptide) { m_peptides.append(peptide); }
    void clear() { m_peptides.clear(); }
    int size() const { return static_cast<int>(m_peptides.size()); }
    QList<Peptide> peptidesList() const { return m_peptides; }

    QJsonArray toJson() const;
    /// Replaces the list.
    /// \return the failure of the first element that is no peptide; those before it are in the list
    Error fromJson(const QJsonArray& array);

    /// The array as indented JSON text.
    QString serialize() const;
    /// \return kBadParameterError, with the list as it was, when the text is not that of a JSON
    ///         array, else as `fromJson`
    Error deserialize(const QString& text);

    bool operator==(const PeptidesList& other) const = default;

private:
    QList<Peptide> m_peptides;
};

/// Lists of peptides as text files.
class ZEL_EXPORT PeptidesListUtils
{
public:
    /// Writes PeptidesList::serialize. A file that cannot be written leaves a line in the log and
    /// nothing else.
    static void writePeptideListToJsonText(const QString& path, const PeptidesList& list);

    /// Replaces the list by that of a file. An empty path leaves it as it was, and a file that
    /// cannot be opened leaves it empty; neither is an error, only a line in the log.
    /// \return the failure of PeptidesList::deserialize
    static Error readPeptideListFromJsonText(const QString& path, PeptidesList* list);
};

} // namespace zel
