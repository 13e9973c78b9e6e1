#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>
#include <QVarLengthArray>

#include <string_view>

namespace zelvano {

/// Writes a JSON object as compact text, in the order of the calls. Each key may be added once.
class BodyWriter
{
public:
    void addText(QLatin1StringView key, QStringView text);
    /// The text is plain: the decimal text of a number, for example.
    void addText(QLatin1StringView key, std::string_view plain);
    void addValue(QStringView key, const QJsonValue &value);
    /// The value is JSON text already.
    void addJson(QLatin1StringView key, QByteArrayView json);

    /// Ends the object, logs it and returns it.
    QByteArray finish();

private:
    void append(QByteArrayView json) { m_json.append(json.data(), json.size()); }
    void beginEntry() { m_json.append(m_json.isEmpty() ? '{' : ','); }
    void appendKey(QLatin1StringView key);
    void appendText(QStringView text);

    QVarLengthArray<char, 1024> m_json;
};

} // namespace zelvano
