#pragma once

#include "common/stable/Error.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>

namespace zel {

/// The elements of a list, each by its own `toJson`.
template <typename Element>
QJsonArray listToJson(const QList<Element>& list)
{
    QJsonArray array;
    for (const Element& element : list) {
        array.append(element.toJson());
    }
    return array;
}

/// Replaces the list by the objects of an array, each read by its own `fromJson`.
/// \return the failure of the first element that cannot be read; those before it are in the list
template <typename Element>
Error listFromJson(const QJsonArray& array, QList<Element>* list)
{
    Error e;
    list->clear();
    for (const QJsonValue& value : array) {
        Element element;
        ZEL_RETURN_IF_ERROR(element.fromJson(value.toObject()));
        list->append(element);
    }
    return e;
}

} // namespace zel
