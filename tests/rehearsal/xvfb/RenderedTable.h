#pragma once

#include <QByteArray>
#include <QList>

/// The brightness of every light over time, as the program renders it, a row a millisecond.
class RenderedTable
{
public:
    /// Null rows if it is not such a table.
    explicit RenderedTable(const QByteArray &csv)
    {
        const QList<QByteArray> lines = csv.trimmed().split('\n');
        const QList<QByteArray> header = lines.first().trimmed().split(',');
        for (const QByteArray &uid : header.sliced(1))
            m_lights.append(uid.toUInt());
        for (const QByteArray &line : lines.sliced(1)) {
            const QList<QByteArray> fields = line.trimmed().split(',');
            if (fields.size() != header.size() || fields.first().toLongLong() != m_rows.size()) {
                m_rows.clear();
                return;
            }
            QList<double> row;
            for (const QByteArray &field : fields.sliced(1))
                row.append(field.toDouble());
            m_rows.append(row);
        }
    }

    /// The uids of the lights, in the order of a row.
    const QList<quint32> &lights() const { return m_lights; }
    qsizetype rowCount() const { return m_rows.size(); }
    const QList<double> &row(qsizetype ms) const { return m_rows.at(ms); }

    /// Numbers are rounded to so many.
    static constexpr double precision = 0.0001;

private:
    QList<quint32> m_lights;
    QList<QList<double>> m_rows;
};
