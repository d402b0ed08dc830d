#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRProperty.h"

/// New values of a contact in a plan: an object whose keys are names of properties, as "krcontacts properties" shows
/// them. A property of one text has a text, or null for none; the name an object of "first", "middle" and "last";
/// phones, e-mails and other multiple values of text a list of texts, one for each entry of the contact in its order:
/// each entry keeps its label, and null takes it away.
namespace PlanValues {

/// The properties whose values a plan offers for editing, for findings of the issue.
std::vector<const KRProperty*> editable(KRText issueName);
/// What the person holds, in this form; of a property that it lacks null, or an empty list.
nlohmann::ordered_json of(const IKRPerson& person, const std::vector<const KRProperty*>& properties);

/// What is wrong with the values as such, with the name of the property; "" when nothing is.
std::string check(const nlohmann::json& values);
/// What is wrong with them for that person; "" when they can be set.
std::string check(const nlohmann::json& values, const IKRPerson& person);
/// Sets those that differ from what the person holds. Checked before.
void set(const nlohmann::json& values, IKRPerson& person);

}  // namespace PlanValues
