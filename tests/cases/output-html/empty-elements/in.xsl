<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="html" indent="no"/>
<xsl:template match="/"><b><br/><img src="a b"/><p/><span/><textarea/><section/><BR/></b></xsl:template>
</xsl:stylesheet>
