#include "database/TADatabase.h"

#include <utility>

TADatabase::TADatabase(VorString user, VorString password, VorString connection) noexcept
    : _user(std::move(user)), _password(std::move(password)), _connection(std::move(connection)) {}

TADatabase::~TADatabase() = default;
