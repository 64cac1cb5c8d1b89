// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include "nb_record.h"

#include <utility>

namespace Nubis {
std::string NBRecord::GetRecordId() const
{
    return recordId_;
}

void NBRecord::SetRecordId(std::string recordId)
{
    recordId_ = std::move(recordId);
}

std::string NBRecord::GetRecordType() const
{
    return recordType_;
}

void NBRecord::SetRecordType(std::string recordType)
{
    recordType_ = std::move(recordType);
}

NBRecordsResponse NBRecord::GetRecordCreateInfo() const
{
    return createInfo_;
}

void NBRecord::SetCreateInfo(NBRecordsResponse createInfo)
{
    createInfo_ = std::move(createInfo);
}

NBRecordsResponse NBRecord::GetRecordModifiedInfo() const
{
    return modifiedInfo_;
}

void NBRecord::SetModifiedInfo(NBRecordsResponse modifiedInfo)
{
    modifiedInfo_ = std::move(modifiedInfo);
}

void NBRecord::GetRecordData(NBFieldMap &recordData) const
{
    recordData = recordData_;
}

void NBRecord::StealRecordData(NBFieldMap &recordData)
{
    recordData = std::exchange(recordData_, NBFieldMap());
}

void NBRecord::SetRecordData(const NBFieldMap &recordData)
{
    recordData_ = recordData;
}

void NBRecord::SetRecordData(NBFieldMap &&recordData)
{
    recordData_ = std::move(recordData);
}

void NBRecord::GetRecordRelations(std::vector<NBRelation> &relations) const
{
    relations = relations_;
}

void NBRecord::StealRecordRelations(std::vector<NBRelation> &relations)
{
    relations = std::exchange(relations_, std::vector<NBRelation>());
}

void NBRecord::SetRecordRelations(const std::vector<NBRelation> &relations)
{
    relations_ = relations;
}

void NBRecord::SetRecordRelations(std::vector<NBRelation> &&relations)
{
    relations_ = std::move(relations);
}

bool NBRecord::GetIsDelete() const
{
    return isDelete_;
}

void NBRecord::SetDelete(bool isDelete)
{
    isDelete_ = isDelete;
}

bool NBRecord::GetNewCreate() const
{
    return isNew_;
}

void NBRecord::SetNewCreate(bool isNew)
{
    isNew_ = isNew;
}

uint64_t NBRecord::GetVersion() const
{
    return version_;
}

void NBRecord::SetVersion(uint64_t version)
{
    version_ = version;
}

uint64_t NBRecord::GetCreateTime() const
{
    return createTime_;
}

void NBRecord::SetCreateTime(uint64_t createTime)
{
    createTime_ = createTime;
}

uint64_t NBRecord::GetEditedTime() const
{
    return editedTime_;
}

void NBRecord::SetEditedTime(uint64_t editedTime)
{
    editedTime_ = editedTime;
}

std::string NBRecord::GetOwnerId() const
{
    return ownerId_;
}

void NBRecord::SetOwnerId(std::string ownerId)
{
    ownerId_ = std::move(ownerId);
}

uint32_t NBRecord::GetPrivilege() const
{
    return privilege_;
}

std::string NBRecord::GetShareUri() const
{
    return shareUri_;
}

void NBRecord::SetBaseCursor(std::string baseCursor)
{
    baseCursor_ = std::move(baseCursor);
}

bool NBRecord::GetShared() const
{
    return isShared_;
}

void NBRecord::SetShared(bool isShared)
{
    isShared_ = isShared;
}
} // namespace Nubis
