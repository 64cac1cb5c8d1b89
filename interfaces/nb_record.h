// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NB_RECORD_H
#define NB_RECORD_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <json/forwards.h>

#include "nb_record_field.h"
#include "nubis_export.h"

namespace Nubis {
struct NBSchema;

/// Who made a change, and when. A plain value.
struct NBRecordsResponse {
    /// As the service sends it.
    int64_t time = 0;
    /// The device that the change came from.
    std::string deviceName;
    /// The app that made the change: NBAppInfo::appId.
    std::string appId;
};

/// One relation from a record to another. A plain value.
struct NBRelation {
    /// As the schema of the record's type names it.
    std::string relationName;
    /// Of the related record.
    std::string recordType;
    /// The id of the related record.
    std::string recordId;
};

/// One record of a cloud database: its identity, its data, and what the service keeps about it.
///
/// A plain value: copy and move it freely; one object must not be changed and used by several threads at once. The
/// forms that are sent and received differ: a record that is written and read back is not the same record.
class NUBIS_EXPORT NBRecord {
public:
    ///@{
    /// Empty lets a save of a new record make an id.
    std::string GetRecordId() const;
    void SetRecordId(std::string recordId);
    ///@}
    ///@{
    /// One of the schema's record types; fields are read by it.
    std::string GetRecordType() const;
    void SetRecordType(std::string recordType);
    ///@}

    ///@{
    /// Who created the record and who changed it last, as the service tells; never sent.
    NBRecordsResponse GetRecordCreateInfo() const;
    void SetCreateInfo(NBRecordsResponse createInfo);
    NBRecordsResponse GetRecordModifiedInfo() const;
    void SetModifiedInfo(NBRecordsResponse modifiedInfo);
    ///@}

    ///@{
    /// The fields by name. GetRecordData copies them; StealRecordData moves them out and leaves the record without any.
    /// Names that the record itself uses when it is sent ("recordId", "deleted", ...) are to be avoided.
    void GetRecordData(NBFieldMap &recordData) const;
    void StealRecordData(NBFieldMap &recordData);
    void SetRecordData(const NBFieldMap &recordData);
    void SetRecordData(NBFieldMap &&recordData);
    ///@}

    ///@{
    /// The relations to other records. Reading and stealing are as with the fields; a record without any is sent
    /// without the member, which leaves those that the service has unless the record is overwritten.
    void GetRecordRelations(std::vector<NBRelation> &relations) const;
    void StealRecordRelations(std::vector<NBRelation> &relations);
    void SetRecordRelations(const std::vector<NBRelation> &relations);
    void SetRecordRelations(std::vector<NBRelation> &&relations);
    ///@}

    ///@{
    /// The record is a tombstone.
    bool GetIsDelete() const;
    void SetDelete(bool isDelete);
    ///@}
    ///@{
    /// The record is to be created, not updated.
    bool GetNewCreate() const;
    void SetNewCreate(bool isNew);
    ///@}
    ///@{
    /// As last seen from the cloud.
    uint64_t GetVersion() const;
    void SetVersion(uint64_t version);
    ///@}
    ///@{
    /// Times in milliseconds since the epoch, 0 when not known; a 0 is not sent.
    uint64_t GetCreateTime() const;
    void SetCreateTime(uint64_t createTime);
    uint64_t GetEditedTime() const;
    void SetEditedTime(uint64_t editedTime);
    ///@}
    ///@{
    /// The cloud account that owns the record; empty is not sent.
    std::string GetOwnerId() const;
    void SetOwnerId(std::string ownerId);
    ///@}
    /// What the user may do with a shared record, as the service says.
    uint32_t GetPrivilege() const;
    /// Where a shared record can be had, as the service says; empty when it does not.
    std::string GetShareUri() const;
    /// The cursor of the changes on which an update is based.
    void SetBaseCursor(std::string baseCursor);
    ///@{
    /// Whether the record is shared with others. Only true is sent.
    bool GetShared() const;
    void SetShared(bool isShared);
    ///@}

    /// The form in which the record is sent; the fields stand beside the record's own members. Throws only where
    /// NBRecordField::ToJsonValue does.
    Json::Value ToJsonValue() const;

    /// Fills the record from the form in which the service sends it. False when that is no object (nothing is changed)
    /// or its record type is not in the schema (only id and type are set). Fields that the schema does not know or
    /// whose value does not fit are left out; fields held under other names stay.
    bool ParseFromJsonValue(const NBSchema &schema, const Json::Value &json);
    ///@{
    /// Each leaves its part as it was when the JSON does not have it.
    void ParseCreateInfoFromJson(const Json::Value &json);
    void ParseModifyInfoFromJson(const Json::Value &json);
    void ParseRelationsFromJson(const Json::Value &json);
    ///@}

private:
    std::string recordId_;
    std::string recordType_;
    NBRecordsResponse createInfo_;
    NBRecordsResponse modifiedInfo_;
    NBFieldMap recordData_;
    std::vector<NBRelation> relations_;
    bool isDelete_ = false;
    bool isNew_ = false;
    uint64_t version_ = 0;
    uint64_t createTime_ = 0;
    uint64_t editedTime_ = 0;
    std::string ownerId_;
    uint32_t privilege_ = 0;
    std::string shareUri_;
    std::string baseCursor_;
    bool isShared_ = false;
};

/// One order to copy a record.
struct NBCopyRecord {
    /// The new record, as it is to be written.
    NBRecord record;
    /// The record to copy from.
    std::string srcRecordId;
};
} // namespace Nubis

#endif // NB_RECORD_H
