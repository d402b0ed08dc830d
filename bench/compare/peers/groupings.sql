-- The five groupings over the tables of tables.py. A line with --, @ and name.form begins a statement. Forms: "join" has a
-- row for each contact of a group, "list" one for each group with its contacts. {LIST} is the database's own function that
-- gathers them, {ALL} every column of a contact but its number.
--@ same_name.join
select c.fn, c.id from contact c join (select fn from contact where fn <> '' group by fn having count(*) > 1) g on c.fn = g.fn
--@ same_name.list
select fn, {LIST}(id) as ids from contact where fn <> '' group by fn having count(*) > 1
--@ shared_phone.join
select distinct p.value, p.cid from phone p join (select value from phone group by value having min(cid) <> max(cid)) g on p.value = g.value
--@ shared_phone.list
select value, {LIST}(cid) as ids from phone group by value having min(cid) <> max(cid)
--@ shared_email.join
select distinct p.value, p.cid from email p join (select value from email group by value having min(cid) <> max(cid)) g on p.value = g.value
--@ shared_email.list
select value, {LIST}(cid) as ids from email group by value having min(cid) <> max(cid)
--@ exact.join
select g.lead, id from contact join (select min(id) as lead, {ALL} from contact group by {ALL} having count(*) > 1) g using ({ALL})
--@ exact.list
select {LIST}(id) as ids from contact group by {ALL} having count(*) > 1
--@ in_contact.list
select distinct what, cid from (select 'phone' as what, cid, value from phone group by cid, value having count(*) > 1 union all select 'email', cid, value from email group by cid, value having count(*) > 1 union all select 'address', cid, value from address group by cid, value having count(*) > 1)
