#include "host/plantstate.h"

#include "common/error.h"
#include "host/sitestore.h"
#include "host/storeerrors.h"

#include <QSqlQuery>
#include <QVariant>

namespace olvex {

QList<PlantUnitState> readPlantUnits(SiteStore &store)
{
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(
        QStringLiteral("SELECT unit_number, name, online, normal_ops, op_hours FROM plant_units"
                       " ORDER BY unit_number"));
    sql.exec(query);
    QueryScope scope(query);
    QList<PlantUnitState> units;
    while (query.next()) {
        units.append({query.value(0).toInt(), query.value(1).toString(),
                      query.value(2).toInt() != 0, query.value(3).toInt() != 0,
                      query.value(4).toDouble()});
    }
    return units;
}

void countOperatingHours(SiteStore &store, double hours)
{
    SqlConnection &sql = store.sql();
    QSqlQuery &query = sql.prepared(
        QStringLiteral("UPDATE plant_units SET op_hours = op_hours + ? WHERE online = 1"));
    query.addBindValue(hours);
    sql.exec(query);
}

void changePlantUnit(SiteStore &store, int unit, const PlantUnitChange &change)
{
    SqlConnection &sql = store.sql();
    Transaction transaction(sql, SqlConnection::TransactionKind::Write);
    QSqlQuery query = sql.prepare(QStringLiteral(
        "UPDATE plant_units SET online = COALESCE(?, online), normal_ops = COALESCE(?, normal_ops),"
        " op_hours = COALESCE(?, op_hours) WHERE unit_number = ?"));
    const auto flag = [](const std::optional<bool> &v) {
        return v ? QVariant(*v ? 1 : 0) : QVariant(QMetaType(QMetaType::Int));
    };
    query.addBindValue(flag(change.online));
    query.addBindValue(flag(change.normalOps));
    query.addBindValue(change.opHours ? QVariant(*change.opHours)
                                      : QVariant(QMetaType(QMetaType::Double)));
    query.addBindValue(unit);
    sql.exec(query);
    if (query.numRowsAffected() < 1) {
        throw Error(StoreError::InvalidRequest, u"There is no plant unit " + QString::number(unit));
    }
    transaction.commit();
}

} // namespace olvex
