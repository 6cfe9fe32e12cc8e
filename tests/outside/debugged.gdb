break Stop
run
print event
print event.m_Msg.m_csText
print g_ObjectRegistry.object
frame function main
print array
print stack
print list
print map
print state
