# Until the catalogues' own generator writes items.json: makes it of docs/items.md.
import re,json,sys
lines=open(sys.argv[1]).read().split('\n')
fams=[];fam=None;pkg=None
pres={'SDRAM':(0xA00000,'nonzero'),'SMART BATTERY':(0xB00000,'readable'),'TRK-7000':(0x800000,'nonzero'),'PoE':(0x200000,'nonzero'),'PIC':(0x600008,'nonzero'),'GSensor':(0x400000,'nonzero')}
ids={'SDRAM':0x14180000,'SMART BATTERY':0x14190000,'TRK-7000':0x14170000,'PoE':0x14140000,'PIC':0x14160000,'GSensor':0x14150000}
for l in lines:
    m=re.match(r'## (.*): `(.*)`',l)
    if m:
        n=m[2]; fam={'name':n,'title':m[1],'id':ids[n],'presence':{'code':pres[n][0],'present':pres[n][1]}}
        if n=='PoE': fam['instances']={'word':'port','max':8,'code_step':1,'id_step':1,'counted_by':[{'code':0x260007,'equals':1,'count':8},{'code':0x260003,'equals':1,'count':4}]}
        if n=='SDRAM': fam['instances']={'word':'module','max':255,'code_step':256,'id_step':1,'counted_by':[{'code':0xA00000}]}
        fam['packages']=[]; fams.append(fam); continue
    m=re.match(r'### (.*) \(`(0x.*)`\)',l)
    if m:
        name=m[1].replace('*M-1*','{n-1}').replace('*P*','{n}')
        pkg={'name':name,'id':int(m[2],16)+(1 if 'instances' in fam else 0),'items':[]}; fam['packages'].append(pkg); continue
    m=re.match(r'\| `(0x\w+)`( \+ [MP])? \|',l)
    if m and fam:
        c=[x.strip() for x in l.strip('|').split('|')]
        it={'id':int(m[1],16)+(1 if m[2] else 0),'name':c[1].replace('*P*','{n}')}
        if c[2]: it['unit']=c[2]
        if c[3]: it['options']=[{'value':int(o.split('=',1)[0]),'label':o.split('=',1)[1]} for o in c[3].split(', ')]
        if c[4]:
            a,b=c[4].split(' to '); it['min']=float(a); it['max']=float(b)
        it['kind']={'`bv` integer':'switch','`v` integer':'integer','`v` real':'real','`sv` string':'text'}[c[6]]
        it['access']=c[5]
        g=pkg['name'] if pkg else ''
        it['role']={'rw':'setting','w':'default'}.get(c[5],'identity' if it['kind']=='text' else 'reading')
        codes=[int(x,16) for x in re.findall(r'`(0x\w+)`',c[7])]
        wr=re.search(r'written at `(0x\w+)`',c[7])
        it['codes']=codes[:1] if wr else codes
        if wr: it['write_code']=int(wr[1],16)
        sc=re.search(r'× (0\.\d+)',c[8])
        if sc: it['scale']=float(sc[1]); it['written_as']='scaled'
        elif c[5]!='r': it['written_as']='switch' if it['kind']=='switch' else 'integer'
        if fam['name']=='PIC' and pkg['name'].startswith('Default'): it['factory_default_of']=it['id']-16
        if fam['name']=='PIC' and pkg['name']=='Settings': it['factory_default']=it['id']+16
        pkg['items'].append(it)
for f in fams:
    if f['name']=='TRK-7000': f['also']=[{'family':'Hardware Monitor','package':'Fan Speed','package_id':0x20300,'of':0x14170310},{'family':'Hardware Monitor','package':'Temperature','package_id':0x20100,'of':0x14170100}]
json.dump({'format':1,'release':'0.1.0','families':fams},open(sys.argv[2],'w'),indent=1)
